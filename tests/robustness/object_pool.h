#pragma once

#include <string>
#include <vector>

#include "support/every_function.h"
#include "support/real_python.h"

/// Every exported function over a pool of Python objects, on the interpreter under test.
class ObjectPool : public real::RealPython {
 protected:
  void SetUp() override {
    RealPython::SetUp();
    if (!hasTables) run("import sys; sys.modules['numpy'] = sys.modules['pandas'] = None");
    run(R"(
import array, datetime, gc, sys, types, warnings
warnings.simplefilter('ignore')
class Meta(type):
  def __call__(cls, *args, **kwargs): return 1
  def __getitem__(cls, key): return 'ab'[key] if isinstance(key, int) else 1
  def __setitem__(cls, key, value): pass
  def __len__(cls): return 2
  def items(cls): return {1: 2}.items()
  def pop(cls, index): return 1
class Thing(metaclass=Meta): m = 'member'
sys.modules['m'] = m = types.ModuleType('m')
m.a = Thing
naive = datetime.datetime(2024, 2, 29, 12, 30)
aware = naive.replace(tzinfo=datetime.timezone(datetime.timedelta(hours=1)))
delta = datetime.timedelta(1, 2, 3)
try: import numpy, pandas
except ImportError: numpy = None
try: import zoneinfo; zoned = naive.replace(tzinfo=zoneinfo.ZoneInfo('Europe/Berlin'))
except Exception: zoned = naive
)");
    pool = {"'word'",
            "Thing",
            "7",
            "1.5",
            "b'bytes'",
            "{'a': 1}",
            "m",
            "zoned",
            "[aware, zoned]",
            "[delta, delta]",
            "array.array('d', [1, 2])"};
    const std::vector<std::string> tables = {"numpy.array(['2024-02-29', 'NaT'], 'M8[ms]')",
                                             "numpy.array([1, 2], 'm8[D]')",
                                             "numpy.array([naive, None], object)",
                                             "numpy.array([delta, None], object)",
                                             "numpy.datetime64('2024-02-29')",
                                             "numpy.timedelta64(1, 's')",
                                             "pandas.DataFrame({'a': [1, 2]})",
                                             "pandas.Series(['x', 'y'])"};
    if (holds("numpy is not None")) pool.insert(pool.end(), tables.begin(), tables.end());
  }

  bool hasTables = true;          ///< whether NumPy and pandas may be imported
  std::vector<std::string> pool;  ///< as Python expressions
};
