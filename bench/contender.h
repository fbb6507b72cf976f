#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// What the programs of the benchmark share. Each of them, a contender, does the same work by other
/// means, on the interpreter that it was built for or is told to load, and is driven by bench.py
/// over its standard streams.
namespace bench {

/// What a row works on.
struct Task {
  std::size_t size;     ///< how many elements; 1 for rows that have none
  std::string subject;  ///< statements that leave the object in `x`, of `n` elements
};

/// The values of the rows that need no Python object to begin with.
constexpr std::int64_t anInteger = 123456789;
constexpr double aReal = 1234.5;
constexpr std::string_view aText = "twenty characters ok";
constexpr std::u16string_view aWideText = u"twenty characters ok";
constexpr const char* aDateText = "2024-02-29T12:34:56.789";

/// The columns of a frame.
constexpr const char* labels[] = {"c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8", "c9"};

/// Rows that look an object up by its dotted name: in `builtins`, then in every module that a
/// shorter beginning of the name is, the shortest first.
constexpr std::pair<const char*, const char*> names[] = {
    {"name_1", "len"},
    {"name_2", "math.hypot"},
    {"name_3", "os.path.join"},
    {"name_4", "xml.dom.minidom.parseString"},
};

/// Keeps the compiler from leaving out what makes a value that nobody reads.
template <class Value>
void keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

/// The rows that one program has an operation for.
class Contender {
 public:
  /// `prepare(task)` does what is not measured and returns the operation, which is.
  template <class Prepare>
  void row(const char* name, Prepare prepare) {
    using Operation = std::invoke_result_t<Prepare, const Task&>;
    rows_[name] = std::make_unique<RowOf<Prepare, Operation>>(std::move(prepare));
  }

  /// A row that needs nothing but the operation.
  template <class Operation>
  void plain(const char* name, Operation operation) {
    row(name, [operation](const Task&) { return operation; });
  }

  /// Says which rows there are, then obeys `prepare ROW SIZE SUBJECT`, `measure ROW SIZE COUNT`,
  /// `peak ROW SIZE` and `forget` until the input ends. `about` tells what does the work.
  void serve(const std::string& about);

 private:
  struct Prepared {
    virtual ~Prepared() = default;
    virtual void repeat(std::uint64_t count) = 0;
  };
  template <class Operation>
  struct PreparedOf : Prepared {
    explicit PreparedOf(Operation made) : operation(std::move(made)) {}
    void repeat(std::uint64_t count) override {
      for (; count != 0; --count) operation();
    }
    Operation operation;
  };
  struct Row {
    virtual ~Row() = default;
    virtual std::unique_ptr<Prepared> prepare(const Task& task) const = 0;
  };
  template <class Prepare, class Operation>
  struct RowOf : Row {
    explicit RowOf(Prepare given) : function(std::move(given)) {}
    std::unique_ptr<Prepared> prepare(const Task& task) const override {
      return std::make_unique<PreparedOf<Operation>>(function(task));
    }
    Prepare function;
  };

  std::int64_t measure(Prepared& operation, std::uint64_t count) const;

  std::map<std::string, std::unique_ptr<Row>> rows_;
};

}  // namespace bench
