#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <array>
#include <cstdio>
#include <memory>
#include <thread>

#include "child_process.h"
#include "files.h"

namespace pelion_core::host {
namespace {

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};

struct Pipe {
  Handle reading;
  Handle writing;

  bool open() {
    HANDLE ends[2];
    if (!CreatePipe(&ends[0], &ends[1], &inherited, 0)) return false;
    reading.reset(ends[0]);
    writing.reset(ends[1]);
    return SetHandleInformation(ends[0], HANDLE_FLAG_INHERIT, 0) != 0;
  }
};

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

// The block of variables that CreateProcess takes, each ended by a zero.
std::wstring variablesFor(const Command& command) {
  std::wstring block;
  wchar_t* const all = GetEnvironmentStringsW();
  for (const wchar_t* each = all; *each != 0; each += std::wstring_view(each).size() + 1) {
    const std::string text = utf8(fs::path(each));
    if (!command.ownVariables || isKeptVariable(text.substr(0, text.find('=', 1)))) {
      block.append(each).push_back(0);
    }
  }
  FreeEnvironmentStringsW(all);
  block.push_back(0);
  return block;
}

// Reads a pipe to its end; past the limit it goes on without keeping what comes.
void readAll(HANDLE pipe, std::string& to, const Command& command, bool isOutput, HANDLE tooMuch) {
  std::array<char, 65536> block;
  DWORD size = 0;
  while (ReadFile(pipe, block.data(), static_cast<DWORD>(block.size()), &size, nullptr) &&
         size != 0) {
    if (to.size() > command.mostOutput) continue;
    const std::string_view piece(block.data(), size);
    to.append(piece);
    if (isOutput && command.onOutput) command.onOutput(piece);
    if (to.size() > command.mostOutput) SetEvent(tooMuch);
  }
}

std::string lastProblem() {
  const DWORD error = GetLastError();
  std::array<wchar_t, 512> words{};
  const DWORD size =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                     words.data(), static_cast<DWORD>(words.size()), nullptr);
  const std::string text = utf8(fs::path(words.data(), words.data() + size));
  return text.empty() ? "error " + std::to_string(error) : text.substr(0, text.find('\r'));
}

// Ends with its handle whatever is in it.
Handle makeJob() {
  Handle job(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

}  // namespace

Ended runProgram(const Command& command) {
  Ended ended;
  Pipe output;
  Pipe errors;
  const Handle noInput(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   &inherited, OPEN_EXISTING, 0, nullptr));
  const Handle tooMuch(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (!output.open() || !errors.open()) {
    ended.problem = lastProblem();
    return ended;
  }
  std::wstring line;
  for (const std::string& word : command.words) line += quoted(pathOf(word).native()) + L' ';
  std::wstring variables = variablesFor(command);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = noInput.get();
  start.hStdOutput = output.writing.get();
  start.hStdError = errors.writing.get();
  PROCESS_INFORMATION child{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                      CREATE_NO_WINDOW | CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT,
                      variables.data(), nullptr, &start, &child)) {
    ended.problem = lastProblem();
    return ended;
  }
  const Handle process(child.hProcess);
  const Handle thread(child.hThread);
  Handle job = makeJob();
  AssignProcessToJobObject(job.get(), process.get());
  ResumeThread(thread.get());
  output.writing.reset();
  errors.writing.reset();

  std::thread outputReader(
      [&] { readAll(output.reading.get(), ended.output, command, true, tooMuch.get()); });
  std::thread errorReader(
      [&] { readAll(errors.reading.get(), ended.errors, command, false, tooMuch.get()); });
  const std::array<HANDLE, 2> events{process.get(), tooMuch.get()};
  const DWORD event = WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(),
                                             FALSE, static_cast<DWORD>(command.limit.count()));
  constexpr UINT killed = 1;
  if (event != WAIT_OBJECT_0) TerminateProcess(process.get(), killed);
  TerminateJobObject(job.get(), killed);
  outputReader.join();
  errorReader.join();

  DWORD status = 0;
  GetExitCodeProcess(process.get(), &status);
  ended.number = static_cast<int>(status);
  ended.how = event == WAIT_OBJECT_0       ? Ended::How::byStatus
              : event == WAIT_OBJECT_0 + 1 ? Ended::How::byOutput
                                           : Ended::How::byTime;
  constexpr DWORD firstException = 0xC0000000;
  if (ended.how == Ended::How::byStatus && status >= firstException) {
    ended.how = Ended::How::bySignal;
    std::array<char, 32> hex{};
    std::snprintf(hex.data(), hex.size(), "exception 0x%08lX", status);
    ended.problem = hex.data();
  }
  return ended;
}

std::string thisProgram() {
  std::wstring name(32768, L'\0');  // the longest path there is
  name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
  return utf8(fs::path(name));
}

}  // namespace pelion_core::host
