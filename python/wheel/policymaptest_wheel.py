# SPDX-License-Identifier: Apache-2.0
"""Builds the wheel of kor, policymaptest and their shared libraries: pyproject.toml's backend.

It needs CMake and a C++ compiler, and no package index. The libraries are compiled in build/wheel/,
which a later build uses again. To take them from a build tree of these sources as they are, name it:

    POLICYMAPTEST_BUILD_DIR=build/release pip wheel .
    pip wheel . --config-settings build-dir=build/release

Equal files make a wheel of equal bytes. As a program, it writes what is known about the packages to
a folder, for CMake:

    policymaptest_wheel.py FOLDER
"""

import base64
import hashlib
import os
import re
import shutil
import stat
import subprocess
import sys
import sysconfig
import tempfile
import tomllib
import zipfile
from collections.abc import Iterator, Mapping
from pathlib import Path
from typing import Any

ROOT = Path(__file__).resolve().parents[2]
LIBRARIES = ("Kor", "PolicyMap", "PolicyMapTest", "PolicyMapTestKit", "PolicyMapPackets")
EXTENSION = f"kor/_kor{sysconfig.get_config_var('EXT_SUFFIX')}"

Settings = Mapping[str, Any] | None


class BuildError(Exception):
    """The wheel cannot be built; the text says why."""


class UnsupportedOperation(Exception):
    """What build_sdist() raises, as frontends expect it."""


# The hooks ----------------------------------------------------------------------------------------


def get_requires_for_build_wheel(config_settings: Settings = None) -> list[str]:
    """Nothing: CMake and the compiler are those of the system."""
    return []


def prepare_metadata_for_build_wheel(metadata_directory: str,
                                     config_settings: Settings = None) -> str:
    """Writes the .dist-info folder without building; returns its name."""
    return _write_information(Path(metadata_directory))


def build_wheel(wheel_directory: str, config_settings: Settings = None,
                metadata_directory: str | None = None) -> str:
    """Writes the wheel and returns its file name.

    Raises BuildError if CMake is missing or fails, or if the given build tree is of other sources,
    incomplete or for another interpreter.
    """
    named = (config_settings or {}).get("build-dir") or os.environ.get("POLICYMAPTEST_BUILD_DIR")
    tree = _existing(ROOT / named) if named else _built()
    with tempfile.TemporaryDirectory() as stage:
        content = Path(stage)
        _install(tree, content)
        information = _write_information(content)
        name = f"{_distribution()}-{_tag()}.whl"
        _pack(content, information, Path(wheel_directory, name))
    return name


def build_sdist(sdist_directory: str, config_settings: Settings = None) -> str:
    """Raises UnsupportedOperation."""
    raise UnsupportedOperation("there are no source distributions: build a wheel")


# The build tree -----------------------------------------------------------------------------------


def _existing(tree: Path) -> Path:
    """The build tree, if it is one of this source tree."""
    try:
        cache = (tree / "CMakeCache.txt").read_text(encoding="utf-8")
    except OSError as error:
        raise BuildError(f"{tree} is no build tree: {error}") from None
    settings = dict(re.findall(r"^(\w+):\w+=(.*)$", cache, re.MULTILINE))
    source = settings.get("CMAKE_HOME_DIRECTORY", "")
    if not source or os.path.realpath(source) != str(ROOT):
        raise BuildError(f"{tree} is a build tree of '{source}', not of {ROOT}")
    if settings.get("POLICYMAPTEST_PLATFORM") != "embedded":
        raise BuildError(f"{tree} uses an installed platform, which a wheel cannot contain")
    return tree


def _built() -> Path:
    """A build tree of its own for each kind of interpreter, compiled."""
    tree = ROOT / "build" / "wheel" / _tag()
    jobs = [] if "CMAKE_BUILD_PARALLEL_LEVEL" in os.environ else [
        "--parallel", str(len(os.sched_getaffinity(0)))]
    generator = ["-G", "Ninja"] if shutil.which("ninja") else []
    # Without debug information and with several sources at once, as it is compiled only once; with
    # relative run paths, so that the bytes do not depend on the folder.
    _cmake("-S", str(ROOT), "-B", str(tree), *generator, "-Wno-dev",
           "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG",
           "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=16",
           "-DCMAKE_BUILD_RPATH_USE_ORIGIN=ON", f"-DPython3_EXECUTABLE={sys.executable}",
           "-DPOLICYMAPTEST_PLATFORM=embedded", "-DPOLICYMAPTEST_WERROR=OFF",
           "-DPOLICYMAPTEST_BUILD_PYTHON=ON", "-DPOLICYMAPTEST_BUILD_TESTKIT=ON",
           "-DPOLICYMAPTEST_BUILD_LAB=OFF", "-DPOLICYMAPTEST_BUILD_TESTS=OFF",
           "-DPOLICYMAPTEST_BUILD_BENCH=OFF", "-DPOLICYMAPTEST_SANITIZE=OFF")
    _cmake("--build", str(tree), *jobs)
    return tree


def _install(tree: Path, stage: Path) -> None:
    """Puts what the tree has for a wheel into the folder."""
    _cmake("--install", str(tree), "--component", "PythonWheel", "--prefix", str(stage), "--strip")
    if not (stage / EXTENSION).is_file():
        raise BuildError(f"{tree} has no {EXTENSION}: configure it with "
                         f"POLICYMAPTEST_BUILD_PYTHON=ON and Python3_EXECUTABLE={sys.executable}")
    for library in LIBRARIES:
        if not (stage / f"kor/lib/lib{library}.so").is_file():
            raise BuildError(f"{tree} has no lib{library}.so")
    # libX.so.0.1 is a link to libX.so.0.1.0, and the first is the name that programs need.
    for link in [path for path in stage.rglob("*") if path.is_symlink()]:
        os.replace(link.resolve(strict=True), link)


def _cmake(*arguments: str) -> None:
    try:
        subprocess.run(["cmake", *arguments], check=True, stdin=subprocess.DEVNULL)
    except FileNotFoundError:
        raise BuildError("cmake is not installed") from None
    except subprocess.CalledProcessError as error:
        raise BuildError(f"cmake failed with status {error.returncode}: "
                         f"{' '.join(arguments)}") from None


# The wheel ----------------------------------------------------------------------------------------


def _project() -> dict[str, Any]:
    with open(ROOT / "pyproject.toml", "rb") as file:
        project: dict[str, Any] = tomllib.load(file)["project"]
    return project


def _version() -> str:
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"^project\(PolicyMapTest VERSION ([0-9.]+)", text, re.MULTILINE)
    if found is None:
        raise BuildError("CMakeLists.txt has no version of the project")
    return found[1]


def _distribution() -> str:
    return f"{_project()['name']}-{_version()}"


def _tag() -> str:
    """Of this interpreter, for which the extension is compiled: cp311-cp311-linux_x86_64."""
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[-.]", "_", sysconfig.get_platform())
    return f"{python}-{python}{sys.abiflags}-{platform}"


def _write_information(folder: Path) -> str:
    """Writes the .dist-info folder, without RECORD; returns its name."""
    project = _project()
    metadata = [
        "Metadata-Version: 2.1",
        f"Name: {project['name']}",
        f"Version: {_version()}",
        f"Summary: {project['description']}",
        f"License: {project['license']['text']}",
        f"Requires-Python: {project['requires-python']}",
    ]
    for extra, requirements in sorted(project["optional-dependencies"].items()):
        metadata.append(f"Provides-Extra: {extra}")
        metadata += [f'Requires-Dist: {each}; extra == "{extra}"' for each in requirements]
    entries = []
    for group, members in sorted(project["entry-points"].items()):
        entries += [f"[{group}]", *(f"{name} = {value}" for name, value in sorted(members.items()))]
    wheel = ["Wheel-Version: 1.0", "Generator: policymaptest_wheel", "Root-Is-Purelib: false",
             f"Tag: {_tag()}"]

    name = f"{_distribution()}.dist-info"
    target = folder / name
    target.mkdir(parents=True)
    for file, lines in ("METADATA", metadata), ("entry_points.txt", entries), ("WHEEL", wheel):
        (target / file).write_text("\n".join(lines) + "\n", encoding="utf-8")
    shutil.copyfile(ROOT / "LICENSE", target / "LICENSE")
    return name


def _pack(content: Path, information: str, wheel: Path) -> None:
    """Writes the archive and, as its last member, its RECORD."""
    record = []
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in _members(content, information):
            data = (content / name).read_bytes()
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            record.append(f"{name},sha256={digest},{len(data)}\n")
            _write_member(archive, name, data)
        name = f"{information}/RECORD"
        record.append(f"{name},,\n")
        _write_member(archive, name, "".join(record).encode())


def _members(content: Path, information: str) -> Iterator[str]:
    """The files by name, those about the wheel last."""
    files = [path for path in content.rglob("*") if path.is_file()]
    names = sorted(path.relative_to(content).as_posix() for path in files)
    yield from (name for name in names if not name.startswith(information))
    yield from (name for name in names if name.startswith(information))


def _write_member(archive: zipfile.ZipFile, name: str, data: bytes) -> None:
    member = zipfile.ZipInfo(name)  # of 1980: the time of the build is not part of a wheel
    member.compress_type = zipfile.ZIP_DEFLATED
    member.create_system = 3  # the attributes are those of Unix
    mode = 0o755 if re.search(r"\.so($|\.)", name) else 0o644
    member.external_attr = (stat.S_IFREG | mode) << 16
    archive.writestr(member, data, compresslevel=9)


def _main(arguments: list[str]) -> int:
    if len(arguments) != 1:
        print("policymaptest_wheel.py FOLDER", file=sys.stderr)
        return 2
    folder = Path(arguments[0])
    name = _write_information(folder)
    # A wheel is installed by pip, which removes what it installs; it leaves this alone.
    (folder / name / "WHEEL").unlink()
    (folder / name / "INSTALLER").write_text("cmake\n", encoding="utf-8")
    print(name)
    return 0


if __name__ == "__main__":
    sys.exit(_main(sys.argv[1:]))
