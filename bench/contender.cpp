#include "contender.h"

#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>

namespace bench {
namespace {

// Other programs that get the core meanwhile do not count.
std::int64_t processorTime() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

/// A field of /proc/self/status in bytes.
std::int64_t memory(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    std::int64_t kibibytes = 0;
    if (word == field + ":" && status >> kibibytes) return kibibytes * 1024;
  }
  return -1;
}

/// By how much the operation raises the memory in use, at its highest.
template <class Operation>
std::int64_t peak(Operation operation) {
  std::ofstream("/proc/self/clear_refs") << "5";
  const std::int64_t before = memory("VmRSS");
  operation();
  return memory("VmHWM") - before;
}

}  // namespace

std::int64_t Contender::measure(Prepared& operation, std::uint64_t count) const {
  constexpr std::int64_t aSecond = 1'000'000'000;
  std::int64_t start = processorTime();
  operation.repeat(1);  // brings back what the other contenders pushed out of the caches
  const std::int64_t first = processorTime() - start;
  if (count == 1 && first > aSecond / 2) return first;
  start = processorTime();
  operation.repeat(count);
  return processorTime() - start;
}

void Contender::serve(const std::string& about) {
  std::cout << about << '\n';
  for (const auto& [name, row] : rows_) std::cout << name << ' ';
  std::cout << std::endl;

  std::map<std::pair<std::string, std::size_t>, std::unique_ptr<Prepared>> prepared;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command;
    std::string name;
    std::size_t size = 0;
    std::string rest;
    words >> command >> name >> size >> std::ws;
    std::getline(words, rest);

    std::int64_t result = 0;
    if (command == "prepare") {
      prepared[{name, size}] = rows_.at(name)->prepare({size, rest});
    } else if (command == "measure") {
      result = measure(*prepared.at({name, size}), std::stoull(rest));
    } else if (command == "peak") {
      result = peak([&] { prepared.at({name, size})->repeat(1); });
    } else {
      prepared.clear();
    }
    std::cout << result << std::endl;
  }
}

}  // namespace bench
