// On a debug build of the interpreter, which counts all references there are: none is lost, and
// those left behind on purpose are exactly as many as stated.

#include <functional>
#include <iostream>

#include "evidence.h"

namespace evidence {
namespace {

constexpr int rounds = 1000;

class Leaks : public Evidence {
 protected:
  // NumPy is built for the ordinary interpreter and counts references past the total.
  Leaks() { hasTables = false; }

  /// What all references of the interpreter grow by while `action` runs `rounds` times, caches
  /// being warm.
  std::int64_t growth(const std::function<void(int)>& action) {
    const PyHandle total =
        eval("lambda: (sys._clear_type_cache(), gc.collect(), sys.gettotalrefcount())[-1]");
    const auto references = [&] {
      return number(object::pyInvoke(total.get(), PyArguments{}, PyKeywords{}));
    };
    const auto round = [&](int i) {
      thrownBy([&] { action(i); });
      exception::pyErrorClear();
    };
    for (int i = 0; i < 3 * static_cast<int>(pool.size()); ++i) round(i);
    references();
    const std::int64_t before = references();
    for (int i = 0; i < rounds; ++i) round(i);
    return references() - before;
  }
};

TEST_F(Leaks, OnlyWhatIsLeftBehindOnPurpose) {
  for (const every::Function& function : functions) {
    EXPECT_EQ(growth([&](int i) {
                const PyHandle object = eval(pool[static_cast<std::size_t>(i) % pool.size()]);
                function.call(object.get(), object);
              }),
              0)
        << function.text;
  }
  std::cout << std::size(functions) << " functions, " << rounds << " rounds each over "
            << pool.size() << " objects\n";

  const PyHandle item = eval("object()");
  // The module, the function, the tuple, the object in it, and the result.
  EXPECT_EQ(growth([&](int) {
              APIAccessor()->callInspectPredicate(toPyObject(item.get()), "isfunction");
            }),
            5 * rounds);
  EXPECT_EQ(growth([&](int) { APIAccessor()->setTupleItem(nullptr, 0, toPyObject(item.get())); }),
            rounds);
  EXPECT_EQ(growth([](int) { object::pyIsNone(nullptr); }), rounds);
}

}  // namespace
}  // namespace evidence
