# Which runtime library a Python belongs to: it prints, a line each, its first argument, its version,
# program, home and library, the last empty when there is no shared one. Python 2 says it too.
import os, sys, sysconfig
value = lambda name: sysconfig.get_config_var(name) or ''
home = getattr(sys, 'base_prefix', sys.prefix)
names = [value('INSTSONAME'), value('LDLIBRARY'), 'python%d%d.dll' % sys.version_info[:2]]
shared = [n for n in names if '.so' in n or '.dylib' in n or '.dll' in n]
shared += [n for n in [value('PYTHONFRAMEWORK')] if n]
folders = [value('LIBDIR'), os.path.join(value('LIBDIR'), value('MULTIARCH')),
           os.path.join(home, 'lib'), home]
libraries = [os.path.join(f, n) for f in folders for n in shared]
lines = [sys.argv[1], '%d.%d.%d' % sys.version_info[:3], sys.executable, home,
         ([l for l in libraries if os.path.isfile(l)] + [''])[0]]
encoded = '\n'.join(lines) if str is bytes else '\n'.join(lines).encode('utf-8', 'surrogateescape')
getattr(sys.stdout, 'buffer', sys.stdout).write(encoded)
