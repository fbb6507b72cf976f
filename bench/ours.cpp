// The work as a host does it with this library. The Python that is loaded is named on the command
// line: runtime library, program, home.

#include <pelion_core/pelion_core.h>

#include <cstring>
#include <iostream>
#include <string>
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

/// A row that takes its subject apart.
template <class Component>
void components(Contender& contender, const char* name) {
  contender.row(name,
                [](const Task& task) { return [x = subject(task)] { keep(Component(x.get())); }; });
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
  contender.row("each_is_datetime", [](const Task& task) {
    return [x = subject(task)] {
      std::uint64_t position = 0;
      keep(type::pyEachObjTypeOfListIsDatetime(x.get(), position));
    };
  });
  contender.row("each_is_timedelta", [](const Task& task) {
    return [x = subject(task)] {
      std::uint64_t position = 0;
      keep(type::pyEachObjTypeOfListIsTimeDelta(x.get(), position));
    };
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
  if (argc > 4 && std::strcmp(argv[4], "--start") == 0) std::_Exit(0);

  Contender contender;
  columns(contender);
  names(contender);
  contender.serve("pelion_core");
}
