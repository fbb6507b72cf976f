// The exported functions beside the floor that the contract sets: the raw C API, bound by name in
// the same way, with the interpreter lock taken and given back around every operation. Both run in
// one process on one interpreter; read the table as ratios.
//
// PELION_BENCH_PYTHON names the runtime library, the program and the home, separated by colons.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <pelion_core/pelion_core.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace pelion_core;
namespace object = api::object;
namespace primitive = api::primitive;

constexpr const char* text20 = "twenty characters ok";

/// The floor: tables of its own, and the lock around every operation.
struct Raw {
  PythonFuncs funcs;
  PythonThreeFuncs three;
  void* threadState = nullptr;

  explicit Raw(const PythonLibHolder& library) : funcs(library), three(library) {}

  template <class Operation>
  auto locked(Operation operation) {
    funcs.PyEval_RestoreThread(threadState);
    struct Release {
      Raw& raw;
      ~Release() { raw.threadState = raw.funcs.PyEval_SaveThread(); }
    } const release{*this};
    return operation();
  }

  void drop(PyObject* o) {
    locked([&] { funcs.Py_DecRef(o); });
  }
};

std::unique_ptr<Raw> raw;

// A thread state saved by the library is found again by giving the lock to the raw side once.
void adoptThreadState() {
  const api::APIAccessor frame;
  raw->threadState = raw->funcs.PyEval_SaveThread();
  raw->funcs.PyEval_RestoreThread(raw->threadState);
}

void intOurs(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(primitive::pyCreateLong(123456789));
}

void intRaw(benchmark::State& state) {
  for (auto _ : state) {
    raw->drop(raw->locked([&] { return raw->funcs.PyLong_FromLongLong(123456789); }));
  }
}

void textOurs(benchmark::State& state) {
  const std::string text = text20;
  for (auto _ : state) benchmark::DoNotOptimize(primitive::pyCreateString(text));
}

void textRaw(benchmark::State& state) {
  for (auto _ : state) {
    raw->drop(raw->locked([&] { return raw->three.PyUnicode_FromStringAndSize(text20, 20); }));
  }
}

void memberOurs(benchmark::State& state) {
  const PyHandle math = api::module::pyCreateModule(u"math");
  for (auto _ : state) benchmark::DoNotOptimize(object::pyGetMember(math.get(), "hypot"));
}

void memberRaw(benchmark::State& state) {
  const PyHandle math = api::module::pyCreateModule(u"math");
  PyObject* const module = toPyObject(math.get());
  for (auto _ : state) {
    raw->drop(raw->locked([&] { return raw->funcs.PyObject_GetAttrString(module, "hypot"); }));
  }
}

void callOurs(benchmark::State& state) {
  const PyHandle hypot = fetch::fetch(u"py.math.hypot");
  const PyArguments args = {primitive::pyCreateFloat(3), primitive::pyCreateFloat(4)};
  const PyKeywords kwargs;
  for (auto _ : state) benchmark::DoNotOptimize(object::pyInvoke(hypot.get(), args, kwargs));
}

void callRaw(benchmark::State& state) {
  const PyHandle hypot = fetch::fetch(u"py.math.hypot");
  const PyHandle three = primitive::pyCreateFloat(3);
  const PyHandle four = primitive::pyCreateFloat(4);
  const PythonFuncs& c = raw->funcs;
  for (auto _ : state) {
    raw->drop(raw->locked([&] {
      PyObject* const args = c.PyTuple_New(2);
      std::int64_t index = 0;
      for (const PyHandle* item : {&three, &four}) {
        c.Py_IncRef(toPyObject(item->get()));
        c.PyTuple_SetItem(args, index++, toPyObject(item->get()));
      }
      PyObject* const kwargs = c.PyDict_New();
      PyObject* const result = c.PyObject_Call(toPyObject(hypot.get()), args, kwargs);
      c.Py_DecRef(kwargs);
      c.Py_DecRef(args);
      return result;
    }));
  }
}

void tupleOurs(benchmark::State& state) {
  const std::vector<PyHandle> items(10, primitive::pyCreateFloat(1));
  for (auto _ : state) benchmark::DoNotOptimize(api::sequence::pyTupleCreate(items));
}

void tupleRaw(benchmark::State& state) {
  const PyHandle one = primitive::pyCreateFloat(1);
  const PythonFuncs& c = raw->funcs;
  for (auto _ : state) {
    raw->drop(raw->locked([&] {
      PyObject* const tuple = c.PyTuple_New(10);
      for (std::int64_t i = 0; i < 10; ++i) {
        c.Py_IncRef(toPyObject(one.get()));
        c.PyTuple_SetItem(tuple, i, toPyObject(one.get()));
      }
      return tuple;
    }));
  }
}

PyHandle listOf1000() {
  const PyHandle range = object::pyInvoke(fetch::fetch(u"py.range").get(),
                                          PyArguments{primitive::pyCreateInt(1000)}, PyKeywords{});
  return object::pyInvoke(fetch::fetch(u"py.list").get(), PyArguments{range}, PyKeywords{});
}

void itemsOurs(benchmark::State& state) {
  const PyHandle list = listOf1000();
  for (auto _ : state) {
    for (std::uint64_t i = 0; i < 1000; ++i) {
      benchmark::DoNotOptimize(api::sequence::pyGetItem(list.get(), i));
    }
  }
}

void itemsRaw(benchmark::State& state) {
  const PyHandle list = listOf1000();
  for (auto _ : state) {
    for (std::int64_t i = 0; i < 1000; ++i) {
      raw->drop(raw->locked(
          [&] { return raw->funcs.PySequence_GetItem(toPyObject(list.get()), i); }));
    }
  }
}

// Names pair ours with the floor; interleaved repetitions keep a noisy machine out of the ratio.
#define PELION_BENCH(name)        \
  BENCHMARK(name##Ours)->Name(#name "/ours"); \
  BENCHMARK(name##Raw)->Name(#name "/raw")

PELION_BENCH(int);
PELION_BENCH(text);
PELION_BENCH(member);
PELION_BENCH(call);
PELION_BENCH(tuple);
PELION_BENCH(items);

std::u16string utf16(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

int main(int argc, char** argv) {
  const char* const setting = std::getenv("PELION_BENCH_PYTHON");
  std::istringstream parts(setting != nullptr ? setting : "");
  std::string library, program, home;
  std::getline(parts, library, ':');
  std::getline(parts, program, ':');
  std::getline(parts, home, ':');
  const int result = loader::attemptToLoadPython(u"3", utf16(library), utf16(program), utf16(home),
                                                 u"", true);
  if (result != 0) {
    std::fprintf(stderr, "PELION_BENCH_PYTHON=%s does not load (%d)\n", library.c_str(), result);
    return 2;
  }
  raw = std::make_unique<Raw>(PythonLibHolder(utf16(library)));
  adoptThreadState();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
