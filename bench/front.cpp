// The work as a host does it through the front door. The Python that is loaded is named on the
// command line: runtime library, program, home.

#include <pelion_core/host.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contender.h"

namespace {

namespace py = pelion_core::host;
using bench::Contender;
using bench::keep;
using bench::Task;

const py::Session* session = nullptr;

py::Object subject(const Task& task) {
  const py::Object globals = py::Object::of(std::map<std::string, std::size_t>{{"n", task.size}});
  (*session)("exec")(task.subject, globals);
  return globals["x"];
}

using Parts = std::vector<py::Object>;

/// The items of the subject, a tuple.
Parts parts(const Task& task) { return subject(task).as<Parts>(); }

/// A row with an operation on its subject.
template <class Operation>
void on(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = subject(task)] { operation(x); };
  });
}

/// A row with an operation on the items of its subject.
template <class Operation>
void onParts(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = parts(task)] { operation(x); };
  });
}

/// A row that makes a Python object of a value.
template <class T>
void make(Contender& contender, const char* name, T value) {
  contender.plain(name, [value] { keep(py::Object::of(value)); });
}

/// A row that reads a value of its subject.
template <class T>
void read(Contender& contender, const char* name) {
  on(contender, name, [](const py::Object& x) { keep(x.as<T>()); });
}

void values(Contender& contender) {
  make(contender, "make_bool", true);
  make(contender, "make_integer", bench::anInteger);
  make(contender, "make_real", bench::aReal);
  make(contender, "make_complex", std::complex<double>(bench::aReal, 2));
  make(contender, "make_none", nullptr);
  make(contender, "make_text", std::string(bench::aText));
  make(contender, "make_wide_text", std::u16string(bench::aWideText));

  read<bool>(contender, "read_bool");
  read<std::int64_t>(contender, "read_integer");
  read<double>(contender, "read_real");
  read<std::complex<double>>(contender, "read_complex");
  read<std::string>(contender, "copy_text");
  read<std::u16string>(contender, "read_wide_text");
}

void objects(Contender& contender) {
  contender.row("items", [](const Task& task) {
    return [x = subject(task), size = task.size] {
      for (std::size_t i = 0; i < size; ++i) keep(x[i]);
    };
  });
  onParts(contender, "dict_get", [](const Parts& x) { keep(x[0][x[1]]); });
  onParts(contender, "dict_set", [](const Parts& x) { x[0].setItem(x[1], x[2]); });

  on(contender, "member", [](const py::Object& x) { keep(x.attr("hypot")); });
  on(contender, "member_absent", [](const py::Object& x) {
    try {
      keep(x.attr("absent"));
    } catch (const py::Error& error) {
      keep(error);
    }
  });
  on(contender, "has_member", [](const py::Object& x) { keep(x.has("hypot")); });
  on(contender, "has_member_absent", [](const py::Object& x) { keep(x.has("absent")); });
  contender.plain("import_member", [] { keep(session->import("math").attr("hypot")); });

  onParts(contender, "call_0", [](const Parts& x) { keep(x[0]()); });
  onParts(contender, "call_2", [](const Parts& x) { keep(x[0](x[1], x[2])); });
  on(contender, "call_values", [](const py::Object& x) { keep(x(3.0, 4.0).as<double>()); });
  onParts(contender, "call_keyword",
          [](const Parts& x) { keep(x[0](x[1], py::kw("base", x[3]))); });
  on(contender, "call_keyword_values",
     [](const py::Object& x) { keep(x("ff", py::kw("base", 16)).as<std::int64_t>()); });
}

void names(Contender& contender) {
  for (const auto& [row, name] : bench::names) {
    contender.plain(row, [name = std::string(name)] { keep((*session)(name)); });
  }
}

std::vector<double> column(const Task& task) {
  return std::vector<double>(task.size, bench::aReal);
}

/// Rows that make a frame of a table that is there, and a table of a frame.
template <class Make>
void frames(Contender& contender, const std::string& in, const std::string& out, Make make) {
  contender.row(in.c_str(), [make](const Task& task) {
    return [table = make(task)] { keep(table.toPandas()); };
  });
  on(contender, out.c_str(), [](const py::Object& x) { keep(py::Table::fromPandas(x)); });
}

void blocks(Contender& contender) {
  contender.row("block_in", [](const Task& task) {
    return [values = column(task)] { keep(py::Object::of(values)); };
  });
  read<std::vector<double>>(contender, "block_copy");
  frames(contender, "frame_in", "frame_out", [](const Task& task) {
    py::Table table;
    for (const char* const label : bench::labels) table.add(label, column(task));
    return table;
  });
  for (const std::string kind : {"words", "texts"}) {
    frames(contender, kind + "_in", kind + "_out", [](const Task& task) {
      py::Table table;
      for (const char* const label : bench::labels) {
        const auto texts = subject(task).attr("split")("\n");
        table.add(label, texts.as<std::vector<std::string>>());
      }
      return table;
    });
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  try {
    py::Session python(py::complete({"", argv[1], argv[2], argv[3], ""}));
    if (argc > 4 && argv[4] == std::string_view("--start")) std::_Exit(0);
    session = &python;
    Contender contender;
    values(contender);
    objects(contender);
    names(contender);
    blocks(contender);
    contender.serve(std::string("loaded ") + argv[1]);
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 2;
  }
}
