#pragma once

#include <string>
#include <vector>

#include "pelion_core/host/discover.h"

/// @file
/// What is wrong with a Python, without loading it.

namespace pelion_core::host {

/// How a check went: the Python can be used, can be used with a remark, or cannot.
enum class Level { passed, remark, failed };

/// What a check found. Each has a word, the same in text and JSON (`codeOf`), and a heading on the
/// troubleshooting page; `pelion_core/host/verdicts.def` lists them with their sentences.
enum class Verdict {
#define PELION_VERDICT(name, code, level, reason, remedy) name,  ///< see `verdicts.def`
#include "pelion_core/host/verdicts.def"
};

/// The word of a verdict: "usable", "wrong-machine".
const char* codeOf(Verdict verdict);

/// One thing that was looked at.
struct Check {
  std::string subject;                ///< "library", "NumPy", "start"
  Level level = Level::passed;        ///< how it went
  Verdict verdict = Verdict::usable;  ///< what it found
  std::string reason;                 ///< what was seen, or what is wrong, in a sentence
  std::string remedy;                 ///< what to do about it; empty when it passed
  double seconds = 0;                 ///< how long it took, when it was measured
};

/// What was found out about a candidate.
struct Report {
  Candidate candidate;                    ///< with the settings completed
  std::string version;                    ///< as exact as the files tell: "3.12.1", "3.12"
  bool debug = false;                     ///< a debug build
  bool freeThreaded = false;              ///< a build without the global lock
  std::vector<std::string> machines;      ///< what the library is built for: "x86-64"
  std::vector<std::string> missingNames;  ///< of the C API that this library binds
  std::string numpy;                      ///< its version; empty when it is not installed
  std::string pandas;                     ///< likewise
  std::vector<Check> checks;              ///< in the order in which they were made

  /// The first check that failed, else the first with a remark, else that it can be used.
  const Check& verdict() const;
};

/// Whether a candidate's program may be run where its files do not tell which Python it starts, as
/// with a script. It gets ten seconds and none of the user's variables but those without which a
/// program finds nothing (`PATH`, `HOME` and the like). An empty file is never run.
enum class Programs { leave, run };

/// Looks at the files of a candidate: the headers and the exported names of the library, the
/// standard library under the home, the environment and its base, the metadata of NumPy and pandas.
/// Nothing is loaded. Throws nothing but std::bad_alloc.
Report inspect(const Candidate& candidate, Programs programs = Programs::leave);

/// A check with the sentences of its verdict.
///
/// @param subject  what was looked at
/// @param verdict  what was found
/// @param settings, environment  of the candidate, for the sentences
/// @param detail   what was seen
Check checkOf(std::string subject, Verdict verdict, const Settings& settings,
              const std::string& environment, const std::string& detail);

}  // namespace pelion_core::host
