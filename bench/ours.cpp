// The work as a host does it with this library. The Python that is loaded is named on the command
// line: runtime library, program, home.

#include <pelion_core/pelion_core.h>

#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contender.h"

namespace {

using namespace pelion_core;
using namespace pelion_core::api;
using bench::Contender;
using bench::keep;
using bench::Task;

std::u16string utf16(const std::string& text) { return {text.begin(), text.end()}; }

PyHandle subject(const Task& task) {
  const PyHandle globals =
      mapping::pyCreateDict({{primitive::pyCreateString("n"),
                              primitive::pyCreateLong(static_cast<std::int64_t>(task.size))}});
  object::pyInvoke(fetch::fetch(u"py.exec").get(),
                   PyArguments{primitive::pyCreateString(task.subject), globals}, PyKeywords{});
  return mapping::pyMappingGetItem(globals.get(), primitive::pyCreateString("x").get());
}

using Parts = std::vector<PyHandle>;

/// The items of the subject, a tuple.
Parts parts(const Task& task) {
  const PyHandle x = subject(task);
  Parts parts(sequence::pySequenceLength(x.get()));
  for (std::size_t i = 0; i < parts.size(); ++i) parts[i] = sequence::pyGetItem(x.get(), i);
  return parts;
}

/// A row with an operation on its subject.
template <class Operation>
void on(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = subject(task)] { operation(x.get()); };
  });
}

/// A row with an operation on the items of its subject.
template <class Operation>
void onParts(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = parts(task)] { operation(x); };
  });
}

void values(Contender& contender) {
  contender.plain("make_bool", [] { keep(primitive::pyCreateBool(true)); });
  contender.plain("make_integer", [] { keep(primitive::pyCreateLong(bench::anInteger)); });
  contender.plain("make_real", [] { keep(primitive::pyCreateFloat(bench::aReal)); });
  contender.plain("make_complex", [] { keep(primitive::pyCreateComplex(bench::aReal, 2)); });
  contender.plain("make_none", [] { keep(primitive::pyCreateNone()); });
  contender.plain("make_text",
                  [text = std::string(bench::aText)] { keep(primitive::pyCreateString(text)); });
  contender.plain("make_wide_text", [text = std::u16string(bench::aWideText)] {
    keep(primitive::pyCreateString(text));
  });

  on(contender, "read_bool", [](pyArray* x) { keep(primitive::pyBoolGetData(x)); });
  on(contender, "read_integer", [](pyArray* x) {
    std::int64_t value = 0;
    primitive::pyLongGetData(x, &value);
    keep(value);
  });
  on(contender, "read_real", [](pyArray* x) { keep(primitive::pyFloatGetData(x)); });
  on(contender, "read_complex", [](pyArray* x) {
    double value[2] = {};
    primitive::pyComplexGetData(x, &value[0], &value[1]);
    keep(value);
  });
  on(contender, "read_text", [](pyArray* x) { keep(object::pyGetChars(x)); });
  on(contender, "copy_text", [](pyArray* x) { keep(std::string(object::pyGetChars(x))); });
  on(contender, "read_wide_text", [](pyArray* x) { keep(object::get_ustring(x)); });
}

void containers(Contender& contender) {
  onParts(contender, "tuple_10", [](const Parts& x) { keep(sequence::pyTupleCreate(x)); });
  contender.row("dict_10", [](const Task& task) {
    PyKeywords items;
    const Parts x = parts(task);
    for (std::size_t i = 0; i < x.size(); i += 2) items.emplace_back(x[i], x[i + 1]);
    return [items] { keep(mapping::pyCreateDict(items)); };
  });
  contender.row("items", [](const Task& task) {
    return [x = subject(task), size = task.size] {
      for (std::size_t i = 0; i < size; ++i) keep(sequence::pyGetItem(x.get(), i));
    };
  });
  onParts(contender, "dict_get",
          [](const Parts& x) { keep(mapping::pyMappingGetItem(x[0].get(), x[1].get())); });
  onParts(contender, "dict_set",
          [](const Parts& x) { mapping::pyMappingSetKey(x[0].get(), x[1].get(), x[2].get()); });
}

void members(Contender& contender) {
  on(contender, "member", [](pyArray* x) { keep(object::pyGetMember(x, "hypot")); });
  on(contender, "member_absent", [](pyArray* x) {
    try {
      keep(object::pyGetMember(x, "absent"));
    } catch (const InternalPyException&) {
      exception::pyErrorClear();
    }
  });
  on(contender, "has_member", [](pyArray* x) { keep(object::pyHasMember(x, "hypot")); });
  on(contender, "has_member_absent", [](pyArray* x) { keep(object::pyHasMember(x, "absent")); });
  onParts(contender, "set_member",
          [](const Parts& x) { object::pySetMember(x[0].get(), x[1].get(), x[2].get()); });
  contender.plain("import_member", [name = std::u16string(u"math")] {
    keep(object::pyGetMember(module::pyCreateModule(name).get(), "hypot"));
  });

  contender.row("call_0", [](const Task& task) {
    return [x = parts(task), args = PyArguments{}, kwargs = PyKeywords{}] {
      keep(object::pyInvoke(x[0].get(), args, kwargs));
    };
  });
  contender.row("call_2", [](const Task& task) {
    const Parts x = parts(task);
    return [callable = x[0], args = PyArguments{x[1], x[2]}, kwargs = PyKeywords{}] {
      keep(object::pyInvoke(callable.get(), args, kwargs));
    };
  });
  on(contender, "call_values", [](pyArray* x) {
    const PyArguments args{primitive::pyCreateFloat(3), primitive::pyCreateFloat(4)};
    keep(primitive::pyFloatGetData(object::pyInvoke(x, args, PyKeywords{}).get()));
  });
  on(contender, "call_keyword_values", [](pyArray* x) {
    const PyArguments args{primitive::pyCreateString("ff")};
    const PyKeywords kwargs{{primitive::pyCreateString("base"), primitive::pyCreateLong(16)}};
    std::int64_t value = 0;
    primitive::pyLongGetData(object::pyInvoke(x, args, kwargs).get(), &value);
    keep(value);
  });
  contender.row("call_keyword", [](const Task& task) {
    const Parts x = parts(task);
    return [callable = x[0], args = PyArguments{x[1]}, kwargs = PyKeywords{{x[2], x[3]}}] {
      keep(object::pyInvoke(callable.get(), args, kwargs));
    };
  });
  on(contender, "text_of", [](pyArray* x) { keep(object::pyStr(x)); });
}

void typeTests(Contender& contender) {
  on(contender, "is_real", [](pyArray* x) { keep(primitive::pyIsFloat(x)); });
  onParts(contender, "is_instance",
          [](const Parts& x) { keep(object::pyIsInstance(x[0].get(), x[1].get())); });
  on(contender, "is_numeric_array", [](pyArray* x) { keep(primitive::pyIsNumericArray(x)); });
  on(contender, "is_datetime", [](pyArray* x) { keep(type::pyObjTypeIsDatetime(x)); });
}

PyHandle newBlock(std::vector<double>& values) {
  return primitive::pyCreateNumericArray(values.size() * sizeof(double), 'd', values.data());
}

void blocks(Contender& contender) {
  contender.row("block_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)]() mutable {
      keep(newBlock(values));
    };
  });
  on(contender, "block_out", [](pyArray* x) {
    std::uint64_t byteCount = 0;
    HostLong itemSize = 0;
    char code = 0;
    void* data = nullptr;
    primitive::pyNumericArrayGetData(x, &byteCount, &itemSize, &code, &data);
    keep(data);
  });
  on(contender, "block_copy", [](pyArray* x) {
    std::uint64_t byteCount = 0;
    HostLong itemSize = 0;
    char code = 0;
    void* data = nullptr;
    primitive::pyNumericArrayGetData(x, &byteCount, &itemSize, &code, &data);
    const auto* const first = static_cast<const double*>(data);
    keep(std::vector<double>(first, first + byteCount / sizeof(double)));
  });
  contender.row("frame_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)]() mutable {
      PyKeywords columns;
      for (const char* const label : bench::labels) {
        columns.emplace_back(primitive::pyCreateString(label),
                             dataframe::pyCreateNumpyAsArray(newBlock(values)));
      }
      keep(dataframe::pyCreateDataFrame(mapping::pyCreateDict(columns)));
    };
  });
  contender.row("frame_out", [](const Task& task) {
    return [x = subject(task), values = std::vector<double>(task.size)]() mutable {
      for (const char* const label : bench::labels) {
        const PyHandle series =
            dataframe::pyGetColumnDataAsPandasSeries(x.get(), primitive::pyCreateString(label));
        const PyHandle array = dataframe::pyCreateNumpyAsArray(series);
        const PyHandle bytes = object::pyInvoke(object::pyGetMember(array.get(), "tobytes").get(),
                                                PyArguments{}, PyKeywords{});
        std::memcpy(values.data(), object::pyGetChars(bytes.get()), values.size() * sizeof(double));
        keep(values);
      }
    };
  });
}

/// A row that takes its subject apart.
template <class Component>
void components(Contender& contender, const char* name) {
  on(contender, name, [](pyArray* x) { keep(Component(x)); });
}

void columns(Contender& contender) {
  contender.row("timedelta64_create", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal),
            count = std::uint64_t{task.size}]() mutable {
      keep(primitive::pyCreateTimedelta64(values.data(), count, 1, &count));
    };
  });
  contender.row("datetime64_create", [](const Task& task) {
    return [texts = std::vector<std::string>(task.size, bench::aDateText),
            count = std::uint64_t{task.size}]() mutable {
      keep(primitive::pyCreateDatetime64(texts, count, 1, &count));
    };
  });
  components<primitive::Datetime64ArrayComponents>(contender, "datetime64_array");
  components<primitive::Datetime64ArrayComponents>(contender, "datetime64_objects");
  components<primitive::Timedelta64ArrayComponents>(contender, "timedelta64_array");
  components<primitive::Timedelta64ArrayComponents>(contender, "timedelta64_objects");
  components<primitive::DatetimeListComponent>(contender, "datetime_list");
  components<primitive::DatetimeListComponent>(contender, "datetime_list_zones");
  components<primitive::TimedeltaListComponent>(contender, "timedelta_list");
  on(contender, "each_is_datetime", [](pyArray* x) {
    std::uint64_t position = 0;
    keep(type::pyEachObjTypeOfListIsDatetime(x, position));
  });
  on(contender, "each_is_timedelta", [](pyArray* x) {
    std::uint64_t position = 0;
    keep(type::pyEachObjTypeOfListIsTimeDelta(x, position));
  });
}

void names(Contender& contender) {
  for (const auto& [row, name] : bench::names) {
    contender.row(row, [name = u"py." + utf16(name)](const Task&) {
      return [name] { keep(fetch::fetch(name)); };
    });
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int result =
      loader::attemptToLoadPython(u"3", utf16(argv[1]), utf16(argv[2]), utf16(argv[3]), u"", true);
  if (result != 0) {
    std::cerr << argv[1] << " does not load (" << result << ")\n";
    return 2;
  }
  interpreter::pyIsOpen();  // gives the lock back
  const std::string_view option = argc > 4 ? argv[4] : "";
  if (option == "--start") std::_Exit(0);
  std::optional<APIAccessor> frame;
  if (option == "--keep-lock") frame.emplace();

  Contender contender;
  values(contender);
  containers(contender);
  members(contender);
  typeTests(contender);
  names(contender);
  blocks(contender);
  columns(contender);
  contender.serve(std::string("loaded ") + argv[1]);
}
