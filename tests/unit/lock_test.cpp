#include "stand_in_test.h"

namespace {

class LockTest : public StandInTest {
 protected:
  // i: start; I: find an interpreter running; a: acquire; r: release; f: finalise
  Calls play(const std::string& script) {
    const std::unique_ptr<python::IPythonAPI> fresh(createIPythonAPI(funcs, three));
    runtime = {};
    runtime.initialised = script[0] == 'I';
    for (const char step : script) {
      const std::string thrown = thrownBy([&] {
        if (step == 'i' || step == 'I') fresh->initialize(u"", u"", u"");
        if (step == 'a') fresh->acquireLock();
        if (step == 'r') fresh->releaseLock();
        if (step == 'f') fresh->Py_Finalize();
      });
      if (thrown != nothingThrown) runtime.calls.push_back("!" + thrown);
    }
    return runtime.take({"PyEval_SaveThread", "PyEval_RestoreThread", "Py_Finalize", "!"});
  }
};

TEST_F(LockTest, ChangesHandsAsTheStateTableSays) {
  const std::string save = "PyEval_SaveThread()", finalize = "Py_Finalize()";
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

}  // namespace
