// Sessions, objects, errors, functions and threads.

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "host_python.h"

namespace front {
namespace {

using Session = Host;

TEST(Settings, AreFoundAndChecked) {
  const py::Settings python = underTest();
  const py::Settings found = py::find(python.program);
  EXPECT_EQ(python.version.find(found.version), 0u);
  EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::u8path(found.library),
                                          std::filesystem::u8path(python.library)));
  const auto folder = std::filesystem::u8path(python.program).parent_path();
  const bool posix = folder.filename() == "bin";
  EXPECT_EQ(py::find((posix ? folder.parent_path() : folder).u8string()).home, found.home);

  const std::filesystem::path foreign =
      std::filesystem::temp_directory_path() / ("foreign-" + python.version + ".so");
  std::ofstream(foreign) << "not a library, but long enough to have the head of an executable file";
  const auto refused = [&](auto change) {
    py::Settings changed = python;
    change(changed);
    return thrownBy([&] { py::Session session(changed); });
  };
  EXPECT_NE(refused([](py::Settings& s) { s.home = "/nowhere"; }).find("is not under \"/nowhere\""),
            std::string::npos);
  EXPECT_NE(refused([](py::Settings& s) {
              s.library = "/nowhere/libpython3.11.so";
            }).find("there is no such file"),
            std::string::npos);
  EXPECT_NE(refused([&](py::Settings& s) {
              s.library = foreign.u8string();
            }).find("is not a shared library"),
            std::string::npos);
  EXPECT_NE(thrownBy([] { py::find("no-such-python"); }).find("does not run as a Python 3"),
            std::string::npos);
  std::filesystem::remove(foreign);
}

TEST(Settings, OneSessionAfterTheOther) {
  py::Object kept;
  std::optional<py::Error> error;
  {
    py::Session python(underTest());
    EXPECT_NE(thrownBy([] { py::Session second(underTest()); }).find("already"), std::string::npos);
    kept = python.eval("[1]");
    try {
      python("len")(1);
    } catch (const py::Error& raised) {
      error = raised;
    }
  }
  EXPECT_FALSE(kept);
  EXPECT_EQ(thrownBy([&] { kept.get(); }), "The object belongs to a session that is closed.");
  EXPECT_EQ(thrownBy([] { py::Object::of(1); }), "There is no open session with a Python.");
  EXPECT_STREQ(error->what(), "TypeError: object of type 'int' has no len()");
  EXPECT_TRUE(error->matches("Exception"));
  EXPECT_FALSE(error->matches("OSError"));
  py::Session again(underTest());
  EXPECT_THROW(kept.size(), std::logic_error);
  kept = again.eval("[1, 2]");
  EXPECT_EQ(kept.size(), 2u);
}

#ifdef _WIN32
// Conda's environments on Windows have a folder of libraries that only their activation puts into
// PATH.
TEST(Settings, FindTheLibrariesOfConda) {
  namespace fs = std::filesystem;
  const fs::path home = fs::u8path(underTest().home);
  const fs::path folder = home / "Library/bin";
  fs::create_directories(folder);
  fs::copy_file(home / "python3.dll", folder / "of_pelion_test.dll");
  EXPECT_EQ(thrownBy([] {
              py::Session{underTest()}.run(
                  "import ctypes, _ctypes\n"
                  "_ctypes.FreeLibrary(ctypes.CDLL('of_pelion_test.dll')._handle)");
            }),
            "nothing thrown");
  fs::remove(folder / "of_pelion_test.dll");
  std::error_code isConda;  // whose folders are not empty
  fs::remove(folder, isConda);
  fs::remove(folder.parent_path(), isConda);
}
#endif

TEST_F(Session, Objects) {
  const py::Object list = python.eval("[1, 'b', None]");
  EXPECT_EQ(list.size(), 3u);
  EXPECT_EQ(list[-2], "b");
  EXPECT_TRUE(list.contains(nullptr));
  EXPECT_FALSE(list.contains(2));
  EXPECT_TRUE(list[2].isNone());
  EXPECT_EQ(list.repr(), "[1, 'b', None]");
  list.setItem(0, std::vector<std::string>{"x"});
  list.remove(1);
  EXPECT_EQ(list.str(), "[['x'], None]");
  EXPECT_TRUE(list.is(py::Object(list.handle())));

  const py::Object space = python("types.SimpleNamespace")(py::kw("a", 1), py::kw("b", "text"));
  space.set("a", 2.5);
  EXPECT_EQ(space.attr("a").as<double>(), 2.5);
  EXPECT_TRUE(space.has("b"));
  EXPECT_FALSE(space.has("c"));
  std::string keys;
  for (const py::Object& key : space.attr("__dict__")) keys += key.as<std::string>();
  EXPECT_EQ(keys, "ab");
  EXPECT_EQ(python("os.path").attr("__name__"), python.import("os.path").attr("__name__"));
  EXPECT_EQ(python("email.mime.text.MIMEText").attr("__name__"), "MIMEText");
  EXPECT_EQ(thrownBy([] { py::Object().str(); }), "The object is empty.");
}

TEST_F(Session, Errors) {
  python.run(
      "import json\n"
      "class Broken(Exception):\n"
      "  def __str__(self): raise ValueError\n"
      "def chained():\n"
      "  try: json.loads('x')\n"
      "  except ValueError as error: raise OSError(2, 'nothing \\ud800') from error\n"
      "def broken(): raise Broken\n");
  try {
    python("__main__.chained")();
    FAIL();
  } catch (const py::Error& error) {
    EXPECT_EQ(error.type(), "FileNotFoundError");
    EXPECT_EQ(error.message(), "[Errno 2] nothing \\ud800");
    for (const char* name : {"OSError", "IOError", "FileNotFoundError", "Exception"}) {
      EXPECT_TRUE(error.matches(name)) << name;
    }
    EXPECT_FALSE(error.matches("ValueError"));
    EXPECT_FALSE(error.matches("no.such.Error"));
    EXPECT_EQ(error.object().attr("errno").as<int>(), 2);
    const std::string& trace = error.traceback();
    EXPECT_LT(trace.find("json.decoder.JSONDecodeError"), trace.find("direct cause"));
    EXPECT_EQ(trace.find("<pelion_core>"), std::string::npos);
  }
  EXPECT_EQ(thrownBy([&] { python("__main__.broken")(); }),
            "__main__.Broken: <unprintable Broken object>");
  struct Case {
    const char* type;
    std::function<void()> action;
  };
  const Case cases[] = {{"NameError", [&] { python("nothing"); }},
                        {"ModuleNotFoundError", [&] { python("nowhere.nothing"); }},
                        {"AttributeError", [&] { python("os.nothing"); }},
                        {"ValueError", [&] { python("os..path"); }},
                        {"SyntaxError", [&] { python.eval("1 +"); }},
                        {"SyntaxError", [&] { python.run("def"); }},
                        {"KeyError", [&] { python.eval("{}")["a"]; }},
                        {"IndexError", [&] { python.eval("[]")[0]; }},
                        {"TypeError", [&] { python.eval("1").size(); }},
                        {"TypeError",
                         [&] {
                           for (auto& each : python.eval("1")) (void)each;
                         }},
                        {"AttributeError", [&] { python.eval("1").set("a", 1); }},
                        {"ZeroDivisionError", [] { throw py::Error("ZeroDivisionError", "x"); }}};
  for (const Case& each : cases) {
    const std::string error = thrownBy(each.action);
    EXPECT_EQ(error.substr(0, error.find(':')), each.type) << error;
    EXPECT_FALSE(pelion_core::api::exception::pyErrorOccurred());
  }
}

TEST_F(Session, FunctionsThatPythonCalls) {
  const py::Object join = python.function(
      [](std::string_view left, const std::vector<int>& numbers, std::optional<double> last) {
        return std::string(left) + std::to_string(numbers.size()) + (last ? "!" : "?");
      });
  EXPECT_EQ(join("a", std::vector<int>{1, 2}, nullptr), "a2?");
  EXPECT_EQ(thrownBy([&] { join("a"); }).find("TypeError: the host's function takes 3"), 0u);
  EXPECT_EQ(thrownBy([&] { join(1, 2, 3); }).find("TypeError: 1 is not a str"), 0u);

  const py::Object throws = python.function([&](int depth) -> int {
    if (depth == 0) throw std::runtime_error("from \xC3\xA4 host \xFF");
    return python("operator.add")(1, python("__main__.again")(depth - 1)).as<int>();
  });
  python("__main__").set("again", throws);
  EXPECT_EQ(thrownBy([&] { throws(3); }), "RuntimeError: from \xC3\xA4 host ");
  const py::Object raises = python.function([&] { python("int")("x"); });
  python.run("def caught(f):\n  try: f()\n  except ValueError as e: return repr(e)");
  EXPECT_EQ(python("__main__.caught")(raises).as<std::string>().find("ValueError("), 0u);

  // Called from a thread of Python, with the host inside a call.
  python.run(
      "import threading\n"
      "def elsewhere(f):\n"
      "  raised = []\n"
      "  def call():\n"
      "    try: f()\n"
      "    except RuntimeError as error: raised.append(str(error))\n"
      "  thread = threading.Thread(target=call)\n"
      "  thread.start(); thread.join()\n"
      "  return raised");
  EXPECT_EQ(python("__main__.elsewhere")(raises).str(),
            "['the host can be called only on the thread that is inside a call']");

  // What a function owns goes with it.
  const auto owned = std::make_shared<int>(1);
  python.function([owned, list = python.eval("[]")] { return list; });
  python.function([] {});
  EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(Session, OutputGoesToTheHost) {
  std::string text;
  python.onOutput([&](std::string_view line, bool isError) {
    text += std::string(line) + (isError ? "!" : ".");
    if (line == "nested") python("print")("inner");
  });
  python.run(
      "import sys, threading\n"
      "print('a'); print('b', end=''); print('c', file=sys.stderr); print()\n"
      "thread = threading.Thread(target=print, args=('thread',))\n"
      "thread.start(); thread.join()\n"
      "print('nested'); print(chr(0xd800), end='')");
  EXPECT_EQ(text, "a.c!b.thread.nested.inner.");
  python.onOutput(nullptr);
  EXPECT_EQ(text, "a.c!b.thread.nested.inner.\\ud800.");
  EXPECT_TRUE(holds("type(sys.stdout).__module__ != '<pelion_core>'"));
}

TEST_F(Session, HostThreadsTakeTurns) {
  constexpr int threads = 4;
  constexpr int rounds = 300;
  const py::Object counts = python.eval("[0]");
  python.run(
      "import time\ndef step(counts):\n"
      "  seen = counts[0]\n  time.sleep(0)\n  counts[0] = seen + 1");
  const py::Object step = python("__main__.step");
  std::atomic<int> errors{0};
  std::vector<std::thread> running;
  for (int i = 0; i < threads; ++i) {
    running.emplace_back([&, mine = counts] {
      for (int round = 0; round < rounds; ++round) {
        step(mine);
        py::Object copy = mine;
        try {
          copy[round + 1];
        } catch (const py::Error&) {
          ++errors;
        }
      }
    });
  }
  for (std::thread& each : running) each.join();
  EXPECT_EQ(counts[0].as<int>(), threads * rounds);
  EXPECT_EQ(errors, threads * rounds);
}

// Each kind of operation over and over on the debug interpreter, which counts all references.
// NumPy and pandas count theirs without it; what they keep is seen in the blocks of memory.
TEST(Rounds, LoseNothing) {
  py::Session python(underTest());
  python.run(
      "import gc, sys\n"
      "def references(): gc.collect(); return sys.gettotalrefcount()\n"
      "def blocks(): gc.collect(); return sys.getallocatedblocks()\n"
      "def fail(): raise KeyError('x')");
  const py::Object list = python.eval("[1, 'b']");
  const py::Object fail = python("__main__.fail");
  const std::vector<double> block{1, 2};
  const char* const setting = std::getenv("PELION_ROUNDS");
  const int rounds = setting != nullptr ? std::atoi(setting) : 1000;
  // What is lost is lost in every round; what is more than nothing, and less, fills up once.
  const auto keep = [&](const char* counter, const std::vector<std::function<void()>>& kinds) {
    const py::Object count = python(counter);
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
      for (int i = 0; i < 20; ++i) thrownBy(kinds[kind]);
      const int before = count().as<int>();
      for (int i = 0; i < rounds; ++i) thrownBy(kinds[kind]);
      EXPECT_LT(count().as<int>() - before, rounds / 2) << counter << " of kind " << kind;
    }
  };
  keep("__main__.references",
       {[&] { list[0].as<int>(); }, [&] { py::Object::of(block).as<std::vector<double>>(); },
        [&] {
          for (const py::Object& each : list) each.str();
        },
        [&] { thrownBy([&] { fail(); }); },
        [&] { python("sorted")(list, py::kw("key", python("str"))); },
        [&] { python.function([list] { return 1; })(); },
        [&] {
          py::Object::of(std::map<std::string, std::set<int>>{{"a", {1}}});
        },
        [&] { py::Object::of(std::chrono::system_clock::now()); },
        [&] { py::Object::of(std::vector<std::string>{"a"}).as<std::vector<std::u16string>>(); }});
  keep("__main__.blocks",
       {[&] { python("numpy.sqrt")(block).as<std::vector<double>>(); },
        [&] {
          py::Object::of(py::StringArray(std::vector<std::u16string>{u"a"})).as<py::StringArray>();
        },
        [&] {
          py::Table table;
          table.add("number", block).add("text", std::vector<std::string>{"a", "b"});
          table.add("time", std::vector<std::chrono::system_clock::time_point>(2));
          table.add("maybe", std::vector<std::optional<bool>>{true, std::nullopt});
          py::Table::fromPandas(table.toPandas());
        },
        [&] { py::Table::fromPandas(list); }});
}

}  // namespace
}  // namespace front
