// Reference counts are exact: over many repetitions nothing grows, except where a reference is left
// behind on purpose, and there it grows by exactly that.

#include "../every_function.h"
#include "real_python.h"

namespace real {
namespace {

using References = RealPython;

TEST_F(References, NothingGrowsOverManyCalls) {
  // Without NumPy and pandas, which are slow and fill caches of their own.
  run(R"(
import gc, sys
sys.modules['numpy'] = sys.modules['pandas'] = None
class Item:
  def __call__(self, *args, **kwargs): return 1
  def __getitem__(self, key): return 'ab'[key] if isinstance(key, int) else 1
  def __setitem__(self, key, value): pass
  def __len__(self): return 2
  def items(self): return {1: 2}.items()
  def pop(self, index): return 1
)");
  const PyHandle item = eval("Item()");
  const PyHandle allocated = eval("lambda: (gc.collect(), sys.getallocatedblocks())[-1]");
  const auto blocks = [&] {
    return number(object::pyInvoke(allocated.get(), PyArguments{}, PyKeywords{}));
  };
  const auto check = [&](const every::Function& function) {
    const auto repeat = [&](int rounds) {
      for (int i = 0; i < rounds; ++i) {
        thrownBy([&] { function.call(item.get(), item); });
        exception::pyErrorClear();
      }
    };
    repeat(100);  // caches of the interpreter fill
    const std::int64_t referencesBefore = references(item);
    const std::int64_t blocksBefore = blocks();
#if defined(_WIN32)
    constexpr int rounds = 500;  // under Wine the lock takes long to change hands
#else
    constexpr int rounds = 10000;
#endif
    repeat(rounds);
    // Free lists may still fill; one block a call would be all the rounds.
    EXPECT_LT(blocks() - blocksBefore, rounds / 2) << function.text;
    EXPECT_EQ(references(item), referencesBefore) << function.text;
  };
  for (const every::Function& function : every::unversioned) check(function);
  for (const every::Function& function : every::versioned) check(function);
}

TEST_F(References, ContainersAddTheirOwn) {
  const PyHandle item = eval("object()");
  const std::int64_t alone = references(item);
  const PyHandle tuple = sequence::pyTupleCreate({item, item});
  const PyHandle dict = mapping::pyCreateDict({{item, item}});
  EXPECT_EQ(references(item), alone + 4);
  EXPECT_EQ(sequence::pyGetItem(tuple.get(), 1), item);
}

TEST_F(References, LeftBehindOnPurpose) {
  const PyHandle item = eval("object()");
  const PyHandle function = fetch::fetch(u"py.inspect.isfunction");
  const std::int64_t before = references(item);
  const std::int64_t functionBefore = references(function);
  for (int i = 0; i < 10; ++i) {
    const APIAccessor api;
    EXPECT_FALSE(api->callInspectPredicate(toPyObject(item.get()), "isfunction"));
    EXPECT_THROW(api->setTupleItem(nullptr, 0, toPyObject(item.get())), InternalPyException);
  }
  for (int i = 0; i < 10; ++i) EXPECT_FALSE(object::pyInspect(item, "isfunction"));
  EXPECT_EQ(references(item), before + 20);  // the argument tuples' and the missing tuple's
  EXPECT_EQ(references(function), functionBefore + 10);
}

}  // namespace
}  // namespace real
