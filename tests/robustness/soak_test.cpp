// Long use: many mixed calls beside running Python threads, and many lives of the interpreter. The
// environment variables PELION_SOAK_CALLS and PELION_LIVES make it long.

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <random>

#include "object_pool.h"

namespace {

std::int64_t residentBytes() {
  std::int64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * sysconf(_SC_PAGESIZE);
}

class Soak : public ObjectPool {
 protected:
  // Calls that take long would leave few of them, and closing NumPy is another matter.
  Soak() { hasTables = false; }
};

TEST_F(Soak, LosesNothingBesideRunningThreads) {
  const std::int64_t calls = std::stoll(real::environment("PELION_SOAK_CALLS", "200000"));
  run(R"(
import threading
counts, stop = [0, 0, 0], False
def work(i):
  while not stop: counts[i] += sum(range(50)) > 0
threads = [threading.Thread(target=work, args=(i,)) for i in range(len(counts))]
sys.setswitchinterval(1e-5)
for thread in threads: thread.start()
def references():  # all that there are, as a debug build of the interpreter counts them
  sys._clear_type_cache(), gc.collect()
  return getattr(sys, 'gettotalrefcount', int)()
)");
  std::vector<PyHandle> objects;
  for (const std::string& expression : pool) objects.push_back(eval(expression));
  std::mt19937 random(1);
  const auto pick = [&](const auto& from) -> const auto& {
    return from[random() % std::size(from)];
  };
  const auto callOne = [&] {
    const PyHandle& object = pick(objects);
    thrownBy([&] { pick(every::functions).call(object.get(), object); });
    pyErrorClear();
  };
  const auto haveAdvanced = [&] {
    return holds("all(now > then for now, then in zip(counts, before))");
  };
  std::int64_t references = 0, resident = 0;
  constexpr int parts = 10;
  for (int part = 0; part < parts; ++part) {
    run("before = list(counts)");
    for (std::int64_t i = 0; i < calls / parts; ++i) callOne();
    // Threads that are left asleep show. On a busy machine one may wait long for a core.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!haveAdvanced() && std::chrono::steady_clock::now() < deadline) callOne();
    EXPECT_TRUE(haveAdvanced()) << part;
    if (part > 0) continue;
    references = real::number(call("references", {}));
    resident = residentBytes();
  }
  references = real::number(call("references", {})) - references;
  const std::int64_t growth = residentBytes() - resident;
  std::cout << calls << " calls; the threads counted to " << repr("counts") << "; " << references
            << " more references; resident memory " << resident / 1024 << " KiB and "
            << growth / 1024 << " more\n";
  EXPECT_LT(references, 100);       // the threads hold some
#if !defined(__SANITIZE_ADDRESS__)  // which keeps freed memory for a while
  EXPECT_LT(growth, resident / 10);
#endif
  run("stop = True\nfor thread in threads: thread.join()");
}

TEST_F(Soak, ManyLivesAreAsGoodAsTheFirst) {
  const std::int64_t lives = std::stoll(real::environment("PELION_LIVES", "20"));
  for (std::int64_t i = 0; i < lives; ++i) {
    TearDown();
    RealPython::SetUp();
    ASSERT_EQ(repr("__import__('json').loads('[1, 2]')"), "[1, 2]") << i;
    ASSERT_EQ(repr("__import__('re').sub('a+', 'b', 'caat')"), "'cbt'") << i;
  }
  std::cout << lives << " lives; resident memory " << residentBytes() / 1024 << " KiB\n";
}

}  // namespace
