// Random programs of exported calls over a pool of handles, against a model of reference counts, of
// the lock's depth, and of the pending error.

#include <dlfcn.h>

#include <algorithm>
#include <memory>

#include "host.h"

using namespace fuzz;

namespace {

constexpr std::size_t objectCount = 4;

/// One of the pool: an object, or a tuple of objects.
struct Slot {
  PyHandle handle;
  std::vector<std::size_t> objects;
};

struct Program {
  PyArguments objects;
  std::vector<std::int64_t> added = std::vector<std::int64_t>(objectCount);
  std::vector<Slot> slots = std::vector<Slot>(8);
  std::vector<std::unique_ptr<APIAccessor>> frames;
  bool pending = false;

  // Every step leaves what the model says.
  void step(Input& input) {
    const std::size_t n = input.below(objectCount);
    Slot& slot = slots[input.below(slots.size())];
    Slot& other = slots[input.below(slots.size())];
    pyArray* const object = objects[n].get();
    switch (input.below(12)) {
      case 0:
        slot = {objects[n], {n}};
        break;
      case 1:
        slot = {};
        break;
      case 2:
        slot = other;
        break;
      case 3:
        managed::pyAddReference(object), ++added[n];
        break;
      case 4:
        if (added[n] > 0) managed::pyDeleteObject(object), --added[n];
        break;
      case 5:
        slot = {sequence::pyTupleCreate({objects[n], objects[0]}), {n, 0}};
        break;
      case 6:
        slot = {sequence::pyTupleCreateSize(1), {n}};
        sequence::pyTupleSetValue(slot.handle.get(), 0, object);
        break;
      case 7:
        if (frames.size() < 5) frames.push_back(std::make_unique<APIAccessor>());
        break;
      case 8:
        if (!frames.empty()) frames.pop_back();
        break;
      case 9:
        fails([&] { sequence::pyGetItem(object, n); });
        break;
      case 10:
        exception::pyErrorClear(), pending = false;
        break;
      case 11:
        fails([&] { object::pyIsInstance(object, object); });
        break;
    }
  }

  void compare(const std::vector<std::int64_t>& base) {
    std::vector<std::int64_t> expected = base;
    std::vector<pyArray*> seen;
    for (std::size_t i = 0; i < objectCount; ++i) expected[i] += added[i];
    for (const Slot& slot : slots) {
      // Handles share one reference; what one object is held by, is held once.
      const auto same = [&](const pyArray* each) { return each == slot.handle.get(); };
      const bool isObject = slot.handle && slot.handle == objects[slot.objects.front()];
      if (isObject || std::any_of(seen.begin(), seen.end(), same)) continue;
      seen.push_back(slot.handle.get());
      for (const std::size_t object : slot.objects) ++expected[object];
    }
    check(counts() == expected, "the reference counts");
    check(held() == !frames.empty(), "the lock");
    check(exception::pyErrorOccurred() == pending, "the pending error");
  }

  // As the interpreter keeps them, at the head of every object.
  std::vector<std::int64_t> counts() const {
    std::vector<std::int64_t> all;
    for (const PyHandle& object : objects) {
      all.push_back(*reinterpret_cast<const std::int64_t*>(object.get()));
    }
    return all;
  }

  static bool held() {
    static const auto check = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "PyGILState_Check"));
    return check() == 1;
  }

 private:
  template <class Action>
  void fails(Action action) {
    try {
      action();
      check(false, "a failure");
    } catch (const InternalPyException&) {
      pending = true;
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python("");
  Program program;
  for (std::size_t i = 0; i < objectCount; ++i) program.objects.push_back(python.eval("object()"));
  const std::vector<std::int64_t> base = program.counts();
  for (Input input(data, size); !input.empty();) {
    program.step(input);
    program.compare(base);
  }
  program.frames.clear();
  program.slots.assign(program.slots.size(), {});
  exception::pyErrorClear();
  program.pending = false;
  for (std::size_t i = 0; i < objectCount; ++i) {
    for (; program.added[i] > 0; --program.added[i]) {
      managed::pyDeleteObject(program.objects[i].get());
    }
  }
  program.compare(base);
  return 0;
}
