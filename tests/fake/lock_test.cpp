#include "support.h"

namespace {

class LockTest : public FakeRuntimeTest {
 protected:
  // i: start; I: find an interpreter running; a: acquire; r: release; f: finalise
  Calls play(const std::string& script) {
    const std::unique_ptr<python::IPythonAPI> fresh(
        createIPythonAPI(PythonFuncs(holder), PythonThreeFuncs(holder)));
    runtime.threadStates = 0;
    runtime.initialised = false;
    runtime.take();
    for (const char step : script) {
      try {
        if (step == 'I') runtime.initialised = true;
        if (step == 'i' || step == 'I') fresh->initialize(u"", u"", u"");
        if (step == 'a') fresh->acquireLock();
        if (step == 'r') fresh->releaseLock();
        if (step == 'f') fresh->Py_Finalize();
      } catch (const InternalPyException& error) {
        runtime.calls.push_back(std::string("!") + error.what());
      }
    }
    return runtime.take({"PyEval_SaveThread", "PyEval_RestoreThread", "Py_Finalize", "!"});
  }
};

TEST_F(LockTest, ChangesHandsAsTheStateTableSays) {
  const std::string save = "PyEval_SaveThread()";
  const std::string finalize = "Py_Finalize()";
  const std::string invalid = "!Invalid lock state for call to release lock.";
  const auto restore = [](int n) { return "PyEval_RestoreThread(state" + std::to_string(n) + ")"; };
  const std::pair<const char*, Calls> rows[] = {
      {"raara", {}},                        // never started
      {"Iaarr", {}},                        // somebody else's interpreter
      {"ia", {}},                           // the start left the lock taken
      {"iaarr", {save}},                    //
      {"iarar", {save, restore(1), save}},  //
      {"iaraarrar", {save, restore(1), save, restore(2), save}},
      {"irrar", {invalid, invalid, save}},                   // the state is not changed by it
      {"iarr", {save}},                                      // a release too many: depth wraps
      {"iarraara", {save, restore(1), save, restore(2)}},    // and an acquire wraps it back
      {"iarrraaara", {save, restore(1), save, restore(2)}},  //
      {"iafrarar", {finalize}},                              // closed in a frame: inert after it
      {"iarfraaa", {save, finalize, restore(1)}},            // closed outside: acquire still counts
      {"ifara", {finalize, restore(0)}},                     //
      {"iafrirar", {finalize, invalid, save}},               // started again
      {"fiar", {finalize, save}},                            //
  };
  for (const auto& [script, expected] : rows) EXPECT_EQ(play(script), expected) << script;
}

using AccessorTest = StartedFakeTest;

TEST_F(AccessorTest, HoldsTheLockOnceForNestedFrames) {
  {
    const api::APIAccessor outer;
    EXPECT_EQ(outer.operator->(), loader::getAPI());
    EXPECT_TRUE(api::interpreter::pyIsOpen());
    EXPECT_EQ(failure([] { api::managed::pyAddReference(nullptr); }), nullPassed);
    EXPECT_EQ(failure([] {
                const api::APIAccessor inner;
                throw InternalPyException("through a frame");
              }),
              "through a frame");
    EXPECT_EQ(runtime.take({"PyEval"}), Calls{"PyEval_RestoreThread(state1)"});
  }
  EXPECT_EQ(runtime.take({"PyEval"}), Calls{"PyEval_SaveThread()"});
  EXPECT_EQ(failure([] { api::managed::pyDeleteObject(nullptr); }), nullPassed);
  EXPECT_EQ(runtime.take(), (Calls{"PyEval_RestoreThread(state2)", "PyEval_SaveThread()"}));
}

}  // namespace
