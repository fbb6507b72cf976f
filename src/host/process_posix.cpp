#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "process.h"

extern char** environ;

namespace pelion_core::host {
namespace {

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() { close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  int get() const { return descriptor_; }
  void close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_;
};

// The child's standard streams: no input, the output into a pipe, no complaints.
class Streams {
 public:
  explicit Streams(int output) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  ~Streams() { posix_spawn_file_actions_destroy(&actions_); }
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> block;
  for (;;) {
    const ssize_t size = ::read(descriptor, block.data(), block.size());
    if (size > 0) {
      text.append(block.data(), static_cast<std::size_t>(size));
    } else if (size == 0 || errno != EINTR) {
      return text;
    }
  }
}

}  // namespace

std::optional<std::string> outputOf(const std::vector<std::string>& command) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  const File output(ends[0]);
  File input(ends[1]);

  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  const Streams streams(input.get());
  if (posix_spawnp(&child, arguments[0], streams.get(), nullptr, arguments.data(), environ) != 0) {
    return std::nullopt;
  }
  input.close();

  std::string text = readAll(output.get());
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return std::nullopt;
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return text;
}

}  // namespace pelion_core::host
