#include <cstring>

#include "support.h"

namespace {

const std::u16string absentLibrary = u"/no/such/folder/lib\u00e9.so";

TEST(LibraryHolder, HoldsNothingWithoutALibrary) {
  for (const std::u16string& path : {std::u16string(), absentLibrary}) {
    const PythonLibHolder holder(path);
    EXPECT_FALSE(holder.loaded());
    EXPECT_EQ(holder.findSymbol("Py_Initialize"), nullptr);
    EXPECT_EQ(holder.findSymbol("malloc"), nullptr) << "looked up in the main program";
    EXPECT_EQ(holder.getLibraryName(), path);
  }
}

TEST(LibraryHolder, SharesTheLibraryAmongCopies) {
  auto first = std::make_unique<PythonLibHolder>(fakePath);
  ASSERT_TRUE(first->loaded());
  EXPECT_EQ(first->findSymbol("PyLong_Type"), systemSymbol(fakePath, "PyLong_Type"));
  EXPECT_EQ(first->findSymbol("PyNo_Such"), nullptr);
  {
    PythonLibHolder copy(*first);
    const PythonFuncs table(copy);
    PythonLibHolder moved(std::move(copy));
    EXPECT_FALSE(copy.loaded());
    EXPECT_EQ(moved.getLibraryName(), fakePath);
    first.reset();
    moved = PythonLibHolder(absentLibrary);
    EXPECT_TRUE(isMapped(fakePath)) << "the table holds it";
    EXPECT_EQ(table.Py_IsInitialized(), 0);
  }
  EXPECT_FALSE(isMapped(fakePath));
}

TEST(LibraryHolder, LoadsFromAFolderOutsideAscii) {
  const CopiedFake copied(u"caf\u00e9 \u65e5\u672c \U0001F40D/lib.so");
  const PythonLibHolder holder(copied.library);
  EXPECT_TRUE(holder.loaded());
  EXPECT_TRUE(isMapped(copied.library));
}

TEST(SymbolDecorator, RemembersAMissingName) {
  const PythonLibHolder holder(fakePath);
  FindSymbolDecorator symbols;
  EXPECT_EQ(symbols.findSymbol(holder, "PyNo_Such", "Py_Initialize"),
            systemSymbol(fakePath, "Py_Initialize"));
  EXPECT_TRUE(symbols.acquired());
  FindSymbolDecorator oneName = symbols;
  EXPECT_EQ(symbols.findSymbol(holder, "PyNo_Such", "PyNo_Other"), nullptr);
  EXPECT_EQ(oneName.findSymbol(holder, "PyNo_Such"), nullptr);
  for (FindSymbolDecorator* failed : {&symbols, &oneName}) {
    EXPECT_NE(failed->findSymbol(holder, "Py_Initialize"), nullptr);
    EXPECT_FALSE(failed->acquired());
    EXPECT_FALSE(FindSymbolDecorator(*failed).acquired());
  }
}

// The tables, looked at as memory.

Calls typeAndFunctionNames() {
  return {
#define PELION_PYTHON_TYPE(name) #name "_Type",
#include "pelion_core/loader/python_types.def"
#define PELION_C_API(result, name, parameters, arguments, failure) #name,
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/python_funcs.def"
  };
}

Calls threeNames() {
  return {
#define PELION_C_API(result, name, parameters, arguments, failure) #name,
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/python_three_funcs.def"
  };
}

void move(Calls& names, const std::string& name, std::ptrdiff_t by) {
  const auto from = std::find(names.begin(), names.end(), name);
  ASSERT_NE(from, names.end());
  std::rotate(from, from + 1, from + 1 + by);
}

template <class Table>
void expectPointers(const Table& table, const Calls& names, const std::u16string& library,
                    const std::set<std::string>& missing) {
  constexpr std::size_t head = sizeof(PythonLibHolder) + sizeof(void*);
  ASSERT_EQ(sizeof table, head + names.size() * sizeof(void*));
  for (std::size_t i = 0; i < names.size(); ++i) {
    void* kept = nullptr;
    std::memcpy(&kept, reinterpret_cast<const char*>(&table) + head + i * sizeof kept, sizeof kept);
    EXPECT_EQ(kept, systemSymbol(library, names[i].c_str())) << names[i];
    EXPECT_EQ(kept == nullptr, !isMapped(library) || missing.count(names[i]) == 1) << names[i];
  }
}

TEST(Tables, KeepEveryPointerInStorageOrder) {
  Calls names = typeAndFunctionNames();
  Calls three = threeNames();
  EXPECT_EQ(names.size() + three.size(), 87U);
  move(names, "PyEval_InitThreads", 2);
  move(three, "PySys_AddXOption", 1);

  const struct {
    std::u16string library;
    std::set<std::string> missing;
    bool acquired, acquiredThree;
  } rows[] = {
      {fakePath, {}, true, true},
      {utf16Path(FAKE_LACKING_TWO), {"PyEval_InitThreads", "PyDict_Type"}, false, true},
      {utf16Path(FAKE_LACKING_VIEW), {"PyMemoryView_FromMemory"}, true, false},
      {absentLibrary, {}, false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::filesystem::path(row.library));
    const PythonLibHolder holder(row.library);
    const PythonFuncs funcs(holder);
    const PythonThreeFuncs threeFuncs(holder);
    EXPECT_EQ(funcs.acquired(), row.acquired);
    EXPECT_EQ(threeFuncs.acquired(), row.acquiredThree);
    EXPECT_EQ(threeFuncs.getLibrary(), row.library);
    expectPointers(PythonFuncs(funcs), names, row.library, row.missing);
    expectPointers(PythonThreeFuncs(threeFuncs), three, row.library, row.missing);
  }
}

class TableTest : public FakeRuntimeTest {
 protected:
  PythonFuncs funcs{holder};
  PythonThreeFuncs three{holder};
};

TEST_F(TableTest, AdaptsOnlyWhatItSays) {
  PyObject* const object = runtime.make("o", "PyLong_Type");
  funcs.Py_IncRef(nullptr);
  funcs.Py_DecRef(nullptr);
  EXPECT_EQ(runtime.take(), Calls{});
  funcs.PyCapsule_Import("a.b");
  three.PySys_SetArgv();
  EXPECT_EQ(runtime.take(), (Calls{"PyCapsule_Import(a.b, 1)", "PySys_SetArgv(0, [null])"}));

  EXPECT_EQ(funcs.PyLong_Check(object), 1);
  EXPECT_EQ(funcs.PyDict_Check(object), 0);
  runtime.answers["PyObject_IsInstance"] = -1;
  EXPECT_EQ(funcs.PyUnicode_Check(object), -1);
  EXPECT_EQ(runtime.take(),
            (Calls{"PyObject_IsInstance(o, PyLong_Type)", "PyObject_IsInstance(o, PyDict_Type)",
                   "PyObject_IsInstance(o, PyUnicode_Type)"}));
}

TEST_F(TableTest, KeepsTheFirstProgramNameAndOption) {
  using Setter = void (PythonThreeFuncs::*)(const std::u16string&) const;
  const std::pair<const char*, Setter> setters[] = {
      {"Py_SetProgramName", &PythonThreeFuncs::Py_SetProgramName},
      {"PySys_AddXOption", &PythonThreeFuncs::PySys_AddXOption},
  };
  for (const auto& [name, set] : setters) {
    // The buffer gets one more zero by every call, so each call may be read one unit further.
    for (runtime.unitsPastText = 1; runtime.unitsPastText < 40; ++runtime.unitsPastText) {
      (three.*set)(runtime.unitsPastText == 1 ? u"first" : u"another, longer than the first");
      EXPECT_EQ(runtime.wide[name].units, L"first" + std::wstring(runtime.unitsPastText, L'\0'));
    }
  }
}

TEST_F(TableTest, ReplacesTheHomeAndKeepsItsBuffer) {
  runtime.unitsPastText = 1;
  const std::wstring zero(1, L'\0');
  for (const wchar_t* home : {L"/first", L"", L"/a/longer/home/than/before", L"/x"}) {
    const std::wstring wide(home);
    three.Py_SetPythonHome({wide.begin(), wide.end()});
    EXPECT_EQ(runtime.wide["Py_SetPythonHome"].units, wide + zero);
    three.Py_SetPath(u"/overwrites/what/was/freed/if/the/home/was");
    EXPECT_EQ(runtime.wide["Py_SetPythonHome"].pointer, wide) << "lives on";
  }
}

TEST_F(TableTest, PassesUtf16AsWideCharacters) {
  const std::pair<std::u16string, std::u32string> rows[] = {
      {u"/caf\u00e9/\u65e5\u672c", U"/caf\u00e9/\u65e5\u672c"},
      {u"\U0001F40D!", U"\U0001F40D!"},
      {{u'a', 0xD83D, u'b'}, {U'a', 0xD83D, U'b'}},
      {{0xDC0D, 0xD83D}, {0xDC0D, 0xD83D}},
  };
  for (const auto& [text, points] : rows) {
    const std::wstring expected = sizeof(wchar_t) == 2 ? std::wstring(text.begin(), text.end())
                                                       : std::wstring(points.begin(), points.end());
    three.Py_SetPath(text);
    three.Py_SetPythonHome(text);
    EXPECT_EQ(runtime.wide["Py_SetPath"].units, expected);
    EXPECT_EQ(runtime.wide["Py_SetPythonHome"].units, expected);
  }
}

}  // namespace
