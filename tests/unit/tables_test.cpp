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

TEST(SymbolDecorator, RemembersThatNeitherNameWasFound) {
  const PythonLibHolder holder(fakePath);
  FindSymbolDecorator symbols;
  EXPECT_NE(symbols.findSymbol(holder, "PyNo_Such", "Py_Initialize"), nullptr);
  EXPECT_TRUE(symbols.acquired());
  EXPECT_EQ(symbols.findSymbol(holder, "PyNo_Such", "PyNo_Other"), nullptr);
  EXPECT_NE(symbols.findSymbol(holder, "Py_Initialize"), nullptr);
  EXPECT_FALSE(FindSymbolDecorator(symbols).acquired());
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
