#include "stand_in_test.h"

namespace {

using shared_object::isMapped;

TEST(LibraryHolder, SharesTheLibraryAmongCopies) {
  const std::u16string absent = u"/no/such/folder/lib\u00e9.so";
  for (const std::u16string& path : {std::u16string(), absent}) {
    const PythonLibHolder none(path);
    EXPECT_FALSE(none.loaded());
    EXPECT_EQ(none.findSymbol("malloc"), nullptr) << "looked up in the main program";
  }
  auto first = std::make_unique<PythonLibHolder>(standIn.u16string());
  {
    PythonLibHolder copy(*first);
    const PythonFuncs table(copy);
    PythonLibHolder moved(std::move(copy));
    EXPECT_EQ(moved.getLibraryName(), standIn.u16string());
    first.reset();
    moved = PythonLibHolder(absent);
    EXPECT_TRUE(isMapped(standIn)) << "the table holds it";
    EXPECT_EQ(table.Py_IsInitialized(), 0);
  }
  EXPECT_FALSE(isMapped(standIn));
}

using Tables = StandInTest;

TEST_F(Tables, RememberThatNeitherNameWasFound) {
  FindSymbolDecorator symbols;
  EXPECT_NE(symbols.findSymbol(library, "PyNo_Such", "Py_Initialize"), nullptr);
  EXPECT_TRUE(symbols.acquired());
  EXPECT_EQ(symbols.findSymbol(library, "PyNo_Such", "PyNo_Other"), nullptr);
  EXPECT_NE(symbols.findSymbol(library, "Py_Initialize"), nullptr);
  EXPECT_FALSE(FindSymbolDecorator(symbols).acquired());
}

TEST_F(Tables, KeepTheFirstProgramNameAndOption) {
  // The buffers get one more zero by every call, so each call may read them one unit further.
  for (std::size_t zeros = 1; zeros < 40; ++zeros) {
    const std::u16string text = zeros == 1 ? u"first" : u"another, longer than the first";
    three.Py_SetProgramName(text);
    three.PySys_AddXOption(text);
    for (const auto& [setter, kept] : runtime.wide)
      EXPECT_EQ(std::wstring(kept, 5 + zeros), L"first" + std::wstring(zeros, 0)) << setter;
  }
}

TEST_F(Tables, ReplaceTheHomeInItsBuffer) {
  const std::u16string surrogates = {0xDC0D, 0xD83D, u'b'};
  const std::pair<std::u16string, std::wstring> rows[] = {
      {u"/caf\u00e9/\u65e5\u672c/\U0001F40D!", L"/caf\u00e9/\u65e5\u672c/\U0001F40D!"},
      {u"", L""},
      {surrogates, std::wstring(surrogates.begin(), surrogates.end())}};
  for (const auto& [home, wide] : rows) {
    three.Py_SetPythonHome(home);
    three.Py_SetPath(u"/overwrites/what/was/freed/if/the/home/was");
    EXPECT_EQ(runtime.wide["Py_SetPythonHome"], wide);
  }
}

}  // namespace
