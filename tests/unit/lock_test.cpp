#include <mutex>
#include <thread>

#include "support.h"

namespace {

class LockTest : public FakeRuntimeTest {
 protected:
  // i: start; I: find an interpreter running; a: acquire; r: release; f: finalise
  Calls play(const std::string& script) {
    const std::unique_ptr<python::IPythonAPI> fresh(createIPythonAPI(funcs, three));
    runtime.threadStates = 0;
    runtime.initialised = script[0] == 'I';
    runtime.take();
    for (const char step : script) {
      const std::string error = failure([&] {
        if (step == 'i' || step == 'I') fresh->initialize(u"", u"", u"");
        if (step == 'a') fresh->acquireLock();
        if (step == 'r') fresh->releaseLock();
        if (step == 'f') fresh->Py_Finalize();
      });
      if (!error.empty()) runtime.calls.push_back("!" + error);
    }
    return runtime.take({"PyEval_SaveThread", "PyEval_RestoreThread", "Py_Finalize", "!"});
  }
};

TEST_F(LockTest, ChangesHandsAsTheStateTableSays) {
  const std::string save = "PyEval_SaveThread()";
  const std::string finalize = "Py_Finalize()";
  const std::string invalid = "!Invalid lock state for call to release lock.";
  const auto restore = [](int n) { return "PyEval_RestoreThread(state" + std::to_string(n) + ")"; };
  // Somebody else's interpreter; a start keeps the lock; a refused release changes nothing; the
  // depth wraps and back; closed in a frame, and outside one; started again.
  // clang-format off
  const std::pair<const char*, Calls> rows[] = {
      {"raara", {}}, {"Iaarr", {}}, {"ia", {}}, {"irrar", {invalid, invalid, save}},
      {"iaraarrar", {save, restore(1), save, restore(2), save}}, {"iarr", {save}},
      {"iarrraaara", {save, restore(1), save, restore(2)}}, {"iafrarar", {finalize}},
      {"iarfraaa", {save, finalize, restore(1)}}, {"ifara", {finalize, restore(0)}},
      {"iafrirar", {finalize, invalid, save}}, {"fiar", {finalize, save}}};
  // clang-format on
  for (const auto& [script, expected] : rows) EXPECT_EQ(play(script), expected) << script;
}

using AccessorTest = StartedFakeTest;

TEST_F(AccessorTest, ServesThreadsThatTakeTurns) {
  std::mutex turn;
  PyHandle shared;
  const auto work = [&] {
    for (int i = 0; i < 200; ++i) {
      const std::lock_guard lock(turn);
      shared = api::primitive::pyCreateLong(i);  // releases what another thread made
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  shared.reset();
  for (const PyObject& object : runtime.objects) EXPECT_EQ(object.references, 0);
}

}  // namespace
