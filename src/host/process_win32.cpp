#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <array>
#include <boost/locale/encoding_utf.hpp>
#include <memory>

#include "process.h"

namespace pelion_core::host {
namespace {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

// A word as the C runtime of the other program reads it: backslashes count only before a quote.
std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L'"';
}

Handle nothing(DWORD access) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return Handle(CreateFileW(L"NUL", access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                            OPEN_EXISTING, 0, nullptr));
}

std::string readAll(HANDLE pipe) {
  std::string text;
  std::array<char, 4096> block;
  DWORD size = 0;
  while (ReadFile(pipe, block.data(), static_cast<DWORD>(block.size()), &size, nullptr) &&
         size != 0) {
    text.append(block.data(), size);
  }
  return text;
}

}  // namespace

std::optional<std::string> outputOf(const std::vector<std::string>& command) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE ends[2];
  if (!CreatePipe(&ends[0], &ends[1], &inherited, 0)) return std::nullopt;
  const Handle output(ends[0]);
  Handle input(ends[1]);
  SetHandleInformation(output.get(), HANDLE_FLAG_INHERIT, 0);
  const Handle noInput = nothing(GENERIC_READ);
  const Handle noErrors = nothing(GENERIC_WRITE);

  std::wstring line;
  for (const std::string& word : command) {
    line += quoted(boost::locale::conv::utf_to_utf<wchar_t>(word)) + L' ';
  }
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = noInput.get();
  start.hStdOutput = input.get();
  start.hStdError = noErrors.get();
  PROCESS_INFORMATION child{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                      nullptr, &start, &child)) {
    return std::nullopt;
  }
  const Handle process(child.hProcess);
  const Handle thread(child.hThread);
  input.reset();

  std::string text = readAll(output.get());
  WaitForSingleObject(process.get(), INFINITE);
  DWORD status = 1;
  if (!GetExitCodeProcess(process.get(), &status) || status != 0) return std::nullopt;
  return text;
}

}  // namespace pelion_core::host
