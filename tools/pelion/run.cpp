#include "running.h"

namespace pelion {

namespace {

// As `python FILE` has it: the file is the module __main__, its folder is the first on the path,
// and its traceback begins with itself. The result is the exit status.
constexpr const char* runner = R"(
def run(words):
    import os, sys
    sys.argv = words
    sys.path[0] = os.path.dirname(os.path.abspath(words[0]))
    main = sys.modules['__main__'].__dict__
    main['__file__'] = words[0]
    try:
        with open(words[0], 'rb') as file:
            code = compile(file.read(), words[0], 'exec')
    except OSError as error:
        sys.stderr.write("pelion: can't open file %r: %s\n" % (words[0], error.strerror))
        return 2
    except (SyntaxError, ValueError) as error:
        sys.excepthook(type(error), error.with_traceback(None), None)
        return 1
    try:
        exec(code, main)
    except SystemExit as end:
        if end.code is None or isinstance(end.code, int):
            return (end.code or 0) & 255
        sys.stderr.write('%s\n' % (end.code,))
        return 1
    except BaseException as error:
        own = error.__traceback__.tb_next
        sys.excepthook(type(error), error.with_traceback(own), own)
        return 130 if isinstance(error, KeyboardInterrupt) else 1
    return 0
)";

}  // namespace

int run(const RunOptions& options) {
  return withPython(options.python, [&](const py::Session& python) {
    const py::Object names = python("dict")();
    python("exec")(runner, names);
    return names["run"](options.words).as<int>();
  });
}

}  // namespace pelion
