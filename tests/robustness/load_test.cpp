// Long use: many mixed calls beside running Python threads, hosts that come from several threads,
// and many lives of the interpreter. The environment variable PELION_SOAK_CALLS makes it long.

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <random>
#include <thread>

#include "evidence.h"

namespace evidence {
namespace {

std::int64_t setting(const char* name, std::int64_t standard) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::stoll(text) : standard;
}

std::int64_t residentBytes() {
  std::int64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * sysconf(_SC_PAGESIZE);
}

class Load : public Evidence {
 protected:
  // Calls that take long would leave few of them, and closing NumPy is another matter.
  Load() { hasTables = false; }
};

TEST_F(Load, SoakBesideRunningThreads) {
  const std::int64_t calls = setting("PELION_SOAK_CALLS", 200'000);
  run(R"(
import threading
counts, stop = [0, 0, 0], False
def work(i):
  while not stop: counts[i] += sum(range(50)) > 0
threads = [threading.Thread(target=work, args=(i,)) for i in range(len(counts))]
sys.setswitchinterval(1e-5)
for thread in threads: thread.start()
)");
  std::vector<PyHandle> objects;
  for (const std::string& expression : pool) objects.push_back(eval(expression));
  std::mt19937 random(1);
  const auto pick = [&](const auto& from) -> const auto& {
    return from[random() % std::size(from)];
  };
  const auto soak = [&](std::int64_t n) {
    for (; n > 0; --n) {
      const PyHandle& object = pick(objects);
      thrownBy([&] { pick(functions).call(object.get(), object); });
      exception::pyErrorClear();
    }
  };
  // Progress counts in tenths, so that a thread that is left asleep shows.
  constexpr int parts = 10;
  soak(calls / parts);
  const std::int64_t resident = residentBytes();
  std::string progress = repr("counts");
  for (int part = 1; part < parts; ++part) {
    run("before = list(counts)");
    soak(calls / parts);
    EXPECT_TRUE(holds("all(now > then for now, then in zip(counts, before))")) << part;
  }
  const std::int64_t growth = residentBytes() - resident;
  std::cout << calls << " calls; the threads counted to " << repr("counts") << " (" << progress
            << " after a tenth); resident memory " << resident / 1024 << " KiB, then "
            << std::showpos << growth / 1024 << std::noshowpos << "\n";
#if !defined(__SANITIZE_ADDRESS__)  // which keeps freed memory for a while
  EXPECT_LT(growth, resident / 10);
#endif
  run("stop = True\nfor thread in threads: thread.join()");
}

TEST_F(Load, HandlesPassBetweenHostThreads) {
  std::vector<PyHandle> handles;
  const std::int64_t before = references(eval("Thing"));
  for (int i = 0; i < 200; ++i) {
    std::thread([&] {
      const PyHandle thing = eval("Thing");
      handles.assign(10, thing);
      handles.push_back(object::pyGetMember(thing.get(), "m"));
    }).join();
    std::thread([&] {
      EXPECT_EQ(std::string(object::pyGetChars(handles.back().get())), "member");
      handles.clear();
    }).join();
  }
  EXPECT_EQ(references(eval("Thing")), before);
}

TEST_F(Load, ManyLives) {
  const std::int64_t lives = setting("PELION_LIVES", 20);
  for (std::int64_t i = 0; i < lives; ++i) {
    TearDown();
    RealPython::SetUp();
    ASSERT_EQ(repr("__import__('json').loads('[1, 2]')"), "[1, 2]") << i;
    ASSERT_EQ(repr("__import__('re').sub('a+', 'b', 'caat')"), "'cbt'") << i;
  }
  std::cout << lives << " lives; resident memory " << residentBytes() / 1024 << " KiB\n";
}

}  // namespace
}  // namespace evidence
