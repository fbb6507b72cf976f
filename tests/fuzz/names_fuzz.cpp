// Dotted names against the rules spelt in Python. Nothing but a few modules can be imported.

#include "host.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python(R"(
import array, sys, types, os.path, importlib
def module(name, **members):
  sys.modules[name] = types.ModuleType(name)
  sys.modules[name].__dict__.update(members)
  sys.modules[name].__path__ = []
module('m', a=1, sub=types.SimpleNamespace(b=2))
module('m.sub', b=3, c=4)
module('m.sub.deep', d=5)
module('\u00e9', **{'\u00e9': 6, '\U0001f40d': 7, '': 8, '\0': 9})
''.encode('utf-16-le'), b''.decode('utf-16')  # looked up while imports still work
sys.meta_path[:] = []
def text(units): return b''.join(units).decode('utf-16')
def found(data):
  units = [data[i:i + 2] for i in range(0, len(data), 2)]
  dot, parts = '.'.encode('utf-16-le'), [[]]
  for unit in units:
    if unit == dot: parts.append([])
    else: parts[-1].append(unit)
  if len(parts) < 2 or b''.join(parts[0]) != 'py'.encode('utf-16-le'): return 'bad name'
  path = parts[1:]
  join = lambda parts: [unit for part in parts for unit in [dot] + part][1:]
  readings = [(['builtins'.encode('utf-16-le')], path)]
  readings += [(join(path[:i]), path[i:]) for i in range(1, len(path))]
  for name, attributes in readings:
    try:
      value = importlib.import_module(text(name))
      for attribute in attributes: value = getattr(value, text(attribute))
      return (value,)
    except Exception: pass
def agrees(result, value): return result is not None and result[0] == value
)");
  // clang-format off
  static const std::u16string starts[] = {
      u"m", u"m.sub", u"m.sub.deep", u"os", u"os.path.join", u"é", u"builtins", u"len", u""};
  static const std::u16string words[] = {
      u"a", u"b", u"c", u"d", u"sub", u"deep", u"len", u"path", u"é", u"🐍", u"__name__",
      u"m", u"py", u"", u".", u"\xFEFFm", u"\xD800", {u'\0'}};
  // clang-format on
  Input input{data, size};
  std::u16string name = input.take() % 8 != 0 ? u"py." : u"";
  name += input.of(starts);
  for (std::size_t count = input.below(3); count > 0; --count) {  // longer ones lead nowhere
    if (input.take() % 16 != 0) name += u'.';
    const std::uint8_t choice = input.take();
    name +=
        choice < 240 ? words[choice % std::size(words)] : std::u16string(1, input.take<char16_t>());
  }
  const PyHandle expected = python.call("found", {python.units(name)});
  const bool bad = python.holds("lambda result: result == 'bad name'", {expected});
  try {
    const PyHandle found = fetch::fetch(name);
    check(!bad && python.holds("agrees", {expected, found}), "the same object");
  } catch (const fetch::BadPythonName&) {
    check(bad, "a bad name");
  } catch (const fetch::SearchFailure&) {
    check(pyIsNone(expected.get()), "not found");
  }
  check(!pyErrorOccurred(), "no error is pending");
  return 0;
}
