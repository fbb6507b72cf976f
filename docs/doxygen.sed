# What Doxygen reads of a header; line numbers stay.

# Special members that are what the language makes of them need no words.
s/^ +~?[A-Za-z]+.*\) (noexcept )?(override )?= (default|delete);$//
# Doxygen takes an alias of a namespace's own name for a loop.
s/^namespace [a-z]+ = ::[a-z]+;$//
# The members that these lists make bear the C API's names: the page c_api.md shows the lists.
s/^#include ".*\.def"$//
# An operation of the interface that wraps one function of the C API bears its name.
s/^  virtual .* (Py[A-Za-z0-9]*_[A-Za-z0-9]+)\(.*\) = 0;$/& \/\/\/< Wraps `\1` of the C API./
# Every conversion has the same two members.
s|^  static .*toPython\(|/** The value as a Python object. */ &|
s|^  static .*fromPython\(|/** The value that a Python object has. */ &|
