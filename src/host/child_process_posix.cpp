#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "child_process.h"
#include "files.h"
#if defined(__APPLE__)
#include <mach-o/dyld.h>

extern char** environ;
#endif

namespace pelion_core::host {
namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  void reset(int number) {
    close();
    number_ = number;
  }
  void close() {
    if (isOpen()) ::close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

struct Pipe {
  Descriptor reading;
  Descriptor writing;

  bool open() {
    int ends[2];
    if (pipe(ends) != 0) return false;
    for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    reading.reset(ends[0]);
    writing.reset(ends[1]);
    return true;
  }
};

class SpawnSettings {
 public:
  SpawnSettings(int output, int errors) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions_, errors, STDERR_FILENO);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setpgroup(&attributes_, 0);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes_, &signals);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  int spawn(pid_t* child, std::vector<char*>& words, std::vector<char*>& variables) const {
    return posix_spawn(child, words[0], &actions_, &attributes_, words.data(), variables.data());
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

std::vector<char*> variablesFor(const Command& command) {
  std::vector<char*> variables;
  for (char** each = environ; *each != nullptr; ++each) {
    const std::string_view text(*each);
    if (!command.ownVariables || isKeptVariable(text.substr(0, text.find('=')))) {
      variables.push_back(*each);
    }
  }
  variables.push_back(nullptr);
  return variables;
}

// Takes what there is to read. False at the end of the stream.
bool drain(int descriptor, std::string& to, const Command& command, bool isOutput) {
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t size = ::read(descriptor, block.data(), block.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return errno == EAGAIN;
    if (size == 0) return false;
    const std::string_view piece(block.data(), static_cast<std::size_t>(size));
    to.append(piece);
    if (isOutput && command.onOutput) command.onOutput(piece);
    if (to.size() > command.mostOutput) return true;
  }
}

class Child {
 public:
  explicit Child(pid_t id) : id_(id) {}
  ~Child() { end(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Leaves the child to be waited for, so that its number stays its own.
  bool hasEnded() const {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == id_;
  }

  // Ends also what the child has started, which is in its group.
  void end() {
    if (isWaitedFor_) return;
    ::kill(-id_, SIGKILL);
    while (waitpid(id_, &status_, 0) < 0 && errno == EINTR) {
    }
    isWaitedFor_ = true;
  }

  int status() const { return status_; }

 private:
  pid_t id_;
  int status_ = 0;
  bool isWaitedFor_ = false;
};

}  // namespace

Ended runProgram(const Command& command) {
  Ended ended;
  Pipe output;
  Pipe errors;
  if (!output.open() || !errors.open()) {
    ended.problem = std::strerror(errno);
    return ended;
  }
  std::vector<char*> words;
  for (const std::string& word : command.words) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  std::vector<char*> variables = variablesFor(command);
  pid_t id = 0;
  const SpawnSettings settings(output.writing.get(), errors.writing.get());
  const int error = settings.spawn(&id, words, variables);
  if (error != 0) {
    ended.problem = std::strerror(error);
    return ended;
  }
  Child child(id);
  output.writing.close();
  errors.writing.close();

  const Clock::time_point deadline = Clock::now() + command.limit;
  ended.how = Ended::How::byStatus;
  for (bool last = false; !last;) {
    last = child.hasEnded();  // what it wrote before is in the pipes
    pollfd waiting[] = {{output.reading.get(), POLLIN, 0}, {errors.reading.get(), POLLIN, 0}};
    constexpr int slice = 10;
    if (!last) poll(waiting, 2, slice);
    if (!output.reading.isOpen() && !errors.reading.isOpen() && !last) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (output.reading.isOpen() && !drain(output.reading.get(), ended.output, command, true)) {
      output.reading.close();
    }
    if (errors.reading.isOpen() && !drain(errors.reading.get(), ended.errors, command, false)) {
      errors.reading.close();
    }
    if (std::max(ended.output.size(), ended.errors.size()) > command.mostOutput) {
      ended.how = Ended::How::byOutput;
      return ended;
    }
    if (!last && Clock::now() > deadline) {
      ended.how = Ended::How::byTime;
      return ended;
    }
  }
  child.end();
  const int status = child.status();  // some systems' macros take its address
  if (WIFSIGNALED(status)) {
    ended.how = Ended::How::bySignal;
    ended.number = WTERMSIG(status);
    ended.problem = "signal " + std::to_string(ended.number) + ", " + strsignal(ended.number);
  } else {
    ended.number = WEXITSTATUS(status);
  }
  return ended;
}

std::string thisProgram() {
#if defined(__APPLE__)
  std::array<char, 4096> name{};
  std::uint32_t size = static_cast<std::uint32_t>(name.size());
  return _NSGetExecutablePath(name.data(), &size) == 0 ? name.data() : "";
#else
  return utf8(realPath("/proc/self/exe"));
#endif
}

}  // namespace pelion_core::host
