// Runs a fuzzer without libFuzzer, over its corpus and then over random inputs, always the same:
// replay_NAME CORPUS COUNT.

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::string current;

void run(const std::string& name, const std::string& input) {
  current = name;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int, char** arguments) {
  std::signal(SIGABRT, [](int) { std::cerr << "input: " << current << '\n'; });
  const int count = std::stoi(arguments[2]);
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    run(entry.path().string(), {std::istreambuf_iterator<char>(file), {}});
  }
  std::mt19937 random(1);
  for (int i = 0; i < count; ++i) {
    std::string input(random() % 200, '\0');
    for (char& each : input) each = static_cast<char>(random());
    run("random number " + std::to_string(i), input);
  }
  std::cout << "the corpus and " << count << " random inputs\n";
}
