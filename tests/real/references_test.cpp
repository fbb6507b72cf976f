// Reference counts are exact: over many repetitions nothing grows, except where a reference is left
// behind on purpose, and there it grows by exactly that.

#include <functional>
#include <vector>

#include "real_python.h"

namespace real {
namespace {

using References = RealPython;

constexpr int rounds = 10000;

struct Action {
  const char* name;
  std::function<void()> run;
};

TEST_F(References, NothingGrowsOverManyCalls) {
  run("class Item:\n  def __eq__(self, other): return True\n  def __hash__(self): return 1\n"
      "class Pair:\n  def items(self): return {1: 2}.items()\n");
  const PyHandle item = eval("Item()");
  const PyHandle list = eval("[Item(), Item()]");
  const PyHandle dict = mapping::pyCreateDict({{item, item}});
  const PyHandle function = eval("lambda *a, **k: a");
  const PyHandle failing = eval("lambda *a: 1 / 0");
  const PyHandle cls = eval("Item");
  const PyHandle name = text("member");
  const PyHandle word = text("word");
  PyArguments args = {item, item};
  PyKeywords kwargs = {{name, item}};
  PyKeywords none;

  // A failing action clears what it left pending.
  const auto failed = [](auto action) {
    try {
      action();
      FAIL() << "did not fail";
    } catch (const InternalPyException&) {
      exception::pyErrorClear();
    }
  };

  const std::vector<Action> actions = {
      {"scalars",
       [] {
         primitive::pyCreateULong(1ULL << 40);
         primitive::pyCreateComplex(1, 2);
         primitive::pyCreateNone();
         primitive::pyCreateBool(true);
       }},
      {"text",
       [&] {
         primitive::pyCreateString(u"twenty characters ok");
         object::get_ustring(word.get());
         object::pyGetChars(word.get());
         object::pyStr(item.get());
       }},
      {"raised in text", [&] { failed([] { primitive::pyCreateString("\xff"); }); }},
      {"members",
       [&] {
         object::pySetMember(item.get(), name.get(), word.get());
         object::pyGetMember(item.get(), name.get());
         object::pyGetMember(item.get(), "member");
         object::pyHasMember(item.get(), "nothing");
       }},
      {"calls",
       [&] {
         object::pyInvoke(function.get(), args, kwargs);
         object::pyInvoke(function.get(), sequence::pyTupleCreate(args),
                          mapping::pyCreateDict(kwargs));
       }},
      {"raised in a call", [&] { failed([&] { object::pyInvoke(failing.get(), args, none); }); }},
      {"fetched error",
       [&] {
         try {
           object::pyInvoke(failing.get(), args, none);
         } catch (const InternalPyException&) {
           exception::pyErrorFetch();
         }
       }},
      {"null in a vector", [&] { failed([&] {
                                   sequence::pyTupleCreate({item, PyHandle()});
                                 }); }},
      {"sequences",
       [&] {
         sequence::pyGetItem(list.get(), 0);
         const PyHandle tuple = sequence::pyTupleCreateSize(1);
         sequence::pyTupleSetValue(tuple.get(), 0, item.get());
       }},
      {"pop",
       [&] {
         object::pyInvoke(object::pyGetMember(list.get(), "append").get(), PyArguments{item}, none);
         sequence::pyPopItemFromList(list.get(), -1);
       }},
      {"mappings",
       [&] {
         mapping::pyMappingSetKey(dict.get(), item.get(), item.get());
         mapping::pyMappingGetItem(dict.get(), item.get());
         mapping::pyMappingGetItems(dict.get());
       }},
      {"hash and equality",
       [&] {
         object::pyGetHash(item.get());
         object::pyEqual(item.get(), word.get());
         object::pyIsEqualOperator(args, none);
         object::pyIsNone(item.get());
       }},
      {"classes and names",
       [&] {
         object::pyGetClass(item.get());
         object::pyGetType(item.get());
         object::pyDir(item.get());
         type::pyTypeGetBases(cls.get());
         object::pyGetZTClassName(item.get());
         type::pyTypeImplementsCollection(cls.get(), "Sequence");
         object::pyIsBuiltin(item.get(), "nothing");
         object::pyInspect(item, "isfunction");
         module::pyInvokeInt(word.get() != nullptr ? integer(3).get() : nullptr);
       }},
      {"names", [] { fetch::fetch(u"py.os.path.join"); }},
      {"name not found",
       [] { EXPECT_THROW(fetch::fetch(u"py.os.nothing"), fetch::SearchFailure); }},
      {"by hand",
       [&] {
         managed::pyAddReference(item.get());
         managed::pyDeleteObject(item.get());
       }},
  };

  const PyHandle collect = fetch::fetch(u"py.gc.collect");
  const PyHandle blocks = fetch::fetch(u"py.sys.getallocatedblocks");
  const auto allocated = [&] {
    object::pyInvoke(collect.get(), PyArguments{}, PyKeywords{});
    return number(object::pyInvoke(blocks.get(), PyArguments{}, PyKeywords{}));
  };
  const std::vector<PyHandle> watched = {item, list, dict, function, failing, cls, name, word};

  for (const Action& action : actions) {
    for (int i = 0; i < 100; ++i) action.run();  // caches of the interpreter fill
    std::vector<std::int64_t> before;
    for (const PyHandle& object : watched) before.push_back(references(object));
    const std::int64_t blocksBefore = allocated();
    for (int i = 0; i < rounds; ++i) action.run();
    // Free lists of the interpreter may still fill; one block a call would be 10,000.
    EXPECT_LT(allocated() - blocksBefore, rounds / 10) << action.name;
    for (std::size_t i = 0; i < watched.size(); ++i) {
      // The interpreter's cache of attribute look-ups may hold a name or a class, or let it go.
      EXPECT_NEAR(double(references(watched[i])), double(before[i]), 2)
          << action.name << ", object " << i;
    }
  }
}

TEST_F(References, ContainersAddTheirOwn) {
  const PyHandle item = eval("object()");
  const std::int64_t alone = references(item);
  const PyHandle tuple = sequence::pyTupleCreate({item, item});
  EXPECT_EQ(references(item), alone + 2);
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
  }
  EXPECT_EQ(references(item), before + 10);  // held by the argument tuples
  EXPECT_EQ(references(function), functionBefore + 10);

  for (int i = 0; i < 10; ++i) {
    const APIAccessor api;
    EXPECT_THROW(api->setTupleItem(nullptr, 0, toPyObject(item.get())), InternalPyException);
  }
  EXPECT_EQ(references(item), before + 20);

  for (int i = 0; i < 10; ++i) EXPECT_FALSE(object::pyInspect(item, "isfunction"));
  EXPECT_EQ(references(item), before + 20);
}

}  // namespace
}  // namespace real
