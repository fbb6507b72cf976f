#include <cstring>
#include <set>

#include "support.h"

namespace {

const std::u16string absentLibrary = u"/no/such/folder/lib\u00e9.so";

TEST(LibraryHolder, SharesTheLibraryAmongCopies) {
  for (const std::u16string& path : {std::u16string(), absentLibrary}) {
    const PythonLibHolder none(path);
    EXPECT_FALSE(none.loaded());
    EXPECT_EQ(none.findSymbol("malloc"), nullptr) << "looked up in the main program";
  }

  auto first = std::make_unique<PythonLibHolder>(fakePath);
  {
    PythonLibHolder copy(*first);
    const PythonFuncs table(copy);
    PythonLibHolder moved(std::move(copy));
    EXPECT_EQ(moved.getLibraryName(), fakePath);
    first.reset();
    moved = PythonLibHolder(absentLibrary);
    EXPECT_TRUE(isMapped(fakePath)) << "the table holds it";
    EXPECT_EQ(table.Py_IsInitialized(), 0);
  }
  EXPECT_FALSE(isMapped(fakePath));
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
    EXPECT_FALSE(FindSymbolDecorator(*failed).acquired());
  }
}

// The tables, looked at as memory.

#define NAME_ONLY(result, name, parameters, arguments, failure) #name,
#define PELION_PYTHON_TYPE(name) #name "_Type",
Calls oneNames = {
#include "pelion_core/loader/python_types.def"
#define PELION_C_API NAME_ONLY
#define PELION_C_API_ADAPTED NAME_ONLY
#include "pelion_core/loader/python_funcs.def"
};
Calls threeNames = {
#define PELION_C_API NAME_ONLY
#define PELION_C_API_ADAPTED NAME_ONLY
#include "pelion_core/loader/python_three_funcs.def"
};

void move(Calls& names, const std::string& name, std::ptrdiff_t by) {
  const auto from = std::find(names.begin(), names.end(), name);
  std::rotate(from, from + 1, from + 1 + by);
}

template <class Table>
void expectPointers(const Table& table, const Calls& names, const std::u16string& library,
                    const std::set<std::string>& missing) {
  EXPECT_EQ(table.acquired(), isMapped(library) && missing.empty());
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
  EXPECT_EQ(oneNames.size() + threeNames.size(), 87U);
  move(oneNames, "PyEval_InitThreads", 2);
  move(threeNames, "PySys_AddXOption", 1);
  const std::set<std::string> lacking = {"PyEval_InitThreads", "PyDict_Type",
                                         "PyMemoryView_FromMemory"};
  for (const std::u16string& library : {fakePath, utf16Path(FAKE_LACKING), absentLibrary}) {
    SCOPED_TRACE(std::filesystem::path(library));
    const auto missing = library == utf16Path(FAKE_LACKING) ? lacking : std::set<std::string>();
    const PythonLibHolder holder(library);
    expectPointers(PythonFuncs(PythonFuncs(holder)), oneNames, library, missing);
    expectPointers(PythonThreeFuncs(holder), threeNames, library, missing);
    EXPECT_EQ(PythonThreeFuncs(holder).getLibrary(), library);
  }
}

using WideText = FakeRuntimeTest;

TEST_F(WideText, KeepsTheFirstProgramNameAndOption) {
  // The buffers get one more zero by every call, so each call may read them one unit further.
  for (std::size_t zeros = 1; zeros < 40; ++zeros) {
    three.Py_SetProgramName(zeros == 1 ? u"first" : u"another, longer than the first");
    three.PySys_AddXOption(zeros == 1 ? u"first" : u"another, longer than the first");
    for (const auto& [setter, text] : runtime.wide)
      EXPECT_EQ(std::wstring(text, 5 + zeros), L"first" + std::wstring(zeros, 0)) << setter;
  }
}

TEST_F(WideText, ReplacesTheHomeAndKeepsItsBuffer) {
  const std::pair<std::u16string, std::u32string> rows[] = {
      {u"/caf\u00e9/\u65e5\u672c/\U0001F40D!", U"/caf\u00e9/\u65e5\u672c/\U0001F40D!"},
      {u"", U""},
      {{0xDC0D, 0xD83D, u'b'}, {0xDC0D, 0xD83D, U'b'}}};
  for (const auto& [text, points] : rows) {
    three.Py_SetPythonHome(text);
    three.Py_SetPath(u"/overwrites/what/was/freed/if/the/home/was");
    EXPECT_EQ(runtime.wide["Py_SetPythonHome"], sizeof(wchar_t) == 2
                                                    ? std::wstring(text.begin(), text.end())
                                                    : std::wstring(points.begin(), points.end()));
  }
}

}  // namespace
