// Blocks, dates and durations by the number of their elements. Needs NumPy in the interpreter.

#include <benchmark/benchmark.h>
#include <pelion_core/pelion_core.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace pelion_core;
using namespace pelion_core::api;

PyHandle eval(const std::string& expression, std::int64_t count) {
  const PyHandle globals = mapping::pyCreateDict(
      {{primitive::pyCreateString("n"), primitive::pyCreateLong(count)},
       {primitive::pyCreateString("numpy"), module::pyGetNumpy()},
       {primitive::pyCreateString("datetime"), module::pyCreateModule(u"datetime")}});
  return object::pyInvoke(fetch::fetch(u"py.eval").get(),
                          PyArguments{primitive::pyCreateString(expression), globals},
                          PyKeywords{});
}

// The block that a copy of it is measured against is warm, as the interpreter's own is after the
// first round, while its allocator keeps the pages.
void numericArray(benchmark::State& state) {
  std::vector<double> block(static_cast<std::size_t>(state.range(0)), 1.5);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        primitive::pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data()));
  }
}

void memcpyOfTheSame(benchmark::State& state) {
  const std::vector<double> block(static_cast<std::size_t>(state.range(0)), 1.5);
  std::vector<double> copy(block.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), block.data(), block.size() * sizeof(double));
    benchmark::ClobberMemory();
  }
}

void numericArrayGetData(benchmark::State& state) {
  std::vector<double> block(static_cast<std::size_t>(state.range(0)), 1.5);
  const PyHandle array =
      primitive::pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data());
  std::uint64_t byteCount = 0;
  HostLong itemSize = 0;
  char code = 0;
  void* data = nullptr;
  for (auto _ : state) {
    primitive::pyNumericArrayGetData(array.get(), &byteCount, &itemSize, &code, &data);
  }
}

template <class Component>
void takeApart(benchmark::State& state, const char* expression) {
  const PyHandle value = eval(expression, state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(Component(value.get()));
}

void createDatetime64(benchmark::State& state) {
  const auto count = static_cast<std::uint64_t>(state.range(0));
  std::vector<std::string> texts(count, "2024-02-29T12:34:56.789");
  for (auto _ : state) {
    benchmark::DoNotOptimize(primitive::pyCreateDatetime64(texts, count, 1, &count));
  }
}

void createTimedelta64(benchmark::State& state) {
  const auto count = static_cast<std::uint64_t>(state.range(0));
  std::vector<double> values(count, 1234.5);
  for (auto _ : state) {
    benchmark::DoNotOptimize(primitive::pyCreateTimedelta64(values.data(), count, 1, &count));
  }
}

void createDatetime(benchmark::State& state) {
  std::vector<double> components = {2024, 2, 29, 12, 34, 56.789, 3600000};
  for (auto _ : state) benchmark::DoNotOptimize(primitive::pyCreateDatetime(components, false));
}

void createTimedelta(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(primitive::pyCreateTimedelta(1234.5));
}

constexpr auto datetimeArray = takeApart<primitive::Datetime64ArrayComponents>;
constexpr auto datetimeList = takeApart<primitive::DatetimeListComponent>;
constexpr auto timedeltaArray = takeApart<primitive::Timedelta64ArrayComponents>;
constexpr auto timedeltaList = takeApart<primitive::TimedeltaListComponent>;
constexpr auto datetimeValue = takeApart<primitive::Datetime64Component>;
constexpr auto timedeltaValue = takeApart<primitive::Timedelta64Component>;

#define PELION_SIZES ->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)

BENCHMARK(numericArray) PELION_SIZES;
BENCHMARK(memcpyOfTheSame) PELION_SIZES;
BENCHMARK(numericArrayGetData) PELION_SIZES;
BENCHMARK_CAPTURE(datetimeArray, numpy, "numpy.arange(n).astype('M8[ns]')")
PELION_SIZES;
BENCHMARK_CAPTURE(datetimeArray, objects, "numpy.arange(n).astype('M8[s]').astype(object)")
PELION_SIZES;
BENCHMARK_CAPTURE(datetimeList, utc,
                  "[datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone.utc)] * n")
PELION_SIZES;
BENCHMARK_CAPTURE(timedeltaArray, numpy, "numpy.arange(n).astype('m8[us]')")
PELION_SIZES;
BENCHMARK_CAPTURE(timedeltaArray, objects, "numpy.arange(n).astype('m8[us]').astype(object)")
PELION_SIZES;
BENCHMARK_CAPTURE(timedeltaList, mixed, "[datetime.timedelta(1, 2, 3)] * n")
PELION_SIZES;
BENCHMARK_CAPTURE(datetimeValue, numpy, "numpy.datetime64(n, 'ns')")->Arg(1);
BENCHMARK_CAPTURE(timedeltaValue, numpy, "numpy.timedelta64(n, 'us')")->Arg(1);
BENCHMARK(createDatetime64) PELION_SIZES;
BENCHMARK(createTimedelta64) PELION_SIZES;
BENCHMARK(createDatetime);
BENCHMARK(createTimedelta);

}  // namespace
