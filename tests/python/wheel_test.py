# SPDX-License-Identifier: Apache-2.0
"""The packages as a wheel, as pip installs them, and in an installation prefix.

Nothing is compiled: all is made of the libraries in the build tree. Programs that use what is
installed do not find the build tree.
"""

from __future__ import annotations

import base64
import csv
import hashlib
import importlib.metadata
import importlib.util
import json
import os
import pathlib
import re
import stat
import subprocess
import sys
import zipfile
from types import ModuleType

import pytest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
BUILD = pathlib.Path(os.environ["BUILD_DIR"])
CACHE: dict[str, str] = dict(re.findall(
    r"^(\w+):\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE))
LIBRARIES = ["libKor.so", "libPolicyMap.so", "libPolicyMapPackets.so", "libPolicyMapTest.so",
             "libPolicyMapTestKit.so"]

if CACHE["POLICYMAPTEST_PLATFORM"] != "embedded" or CACHE["POLICYMAPTEST_BUILD_TESTKIT"] != "ON":
    pytest.skip("this build has not all libraries of a wheel", allow_module_level=True)

POLICY = """ip access-list web
  10 permit tcp any any eq 80
class-map match-any web
  match access-group web
policy-map edge
  class web
    set action1 7
interface Ethernet1
  service-policy input edge"""

# Its arguments: the folder of the packages, and libraries to load first.
PROGRAM = f"""
import json, sys
sys.path.insert(0, sys.argv[1])
import kor
for library in sys.argv[2:]:
    kor.load(library)
import policymaptest
with policymaptest.Lab() as lab:
    lab.load({POLICY!r})
    actions = lab.record("edge").rule("web 10").actions
with open("/proc/self/maps") as maps:
    files = {{line.split(maxsplit=5)[5].strip() for line in maps if "/" in line}}
print(json.dumps({{"actions": actions, "types": kor.types(), "files": sorted(files)}}))
"""


def run(*command: object, **environment: str) -> str:
    """What the command prints, in an environment that says nothing about the build tree."""
    kept = {name: value for name, value in os.environ.items()
            if not name.startswith(("PYTHON", "PIP_", "LD_", "POLICYMAPTEST_"))
            and name not in ("SOURCE_DIR", "BUILD_DIR")}
    done = subprocess.run([str(word) for word in command], cwd="/", text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env={**kept, "PYTHONDONTWRITEBYTECODE": "1", **environment})
    assert done.returncode == 0, done.stdout
    return done.stdout


def pip(command: str, *arguments: object, **environment: str) -> None:
    if importlib.util.find_spec("pip") is None:
        pytest.skip(f"pip is not installed: `pip {command}` was not tried")
    run(sys.executable, "-m", "pip", command, "-q", "--no-index", "--no-deps", "--no-cache-dir",
        *arguments, PIP_CONFIG_FILE=os.devnull, PIP_DISABLE_PIP_VERSION_CHECK="1", **environment)


def install(destination: pathlib.Path, what: pathlib.Path, **environment: str) -> None:
    pip("install", "--no-compile", "--target", destination, what, **environment)


@pytest.fixture(scope="module")
def backend() -> ModuleType:
    path = SOURCE / "python" / "wheel" / "policymaptest_wheel.py"
    spec = importlib.util.spec_from_file_location("policymaptest_wheel", path)
    assert spec is not None and spec.loader is not None
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


@pytest.fixture(scope="module")
def wheel(backend: ModuleType, tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    folder = tmp_path_factory.mktemp("wheel")
    name: str = backend.build_wheel(str(folder), {"build-dir": str(BUILD)})
    return folder / name


@pytest.fixture(scope="module")
def in_wheel(wheel: pathlib.Path, tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """The folder to which pip installed the wheel."""
    folder = tmp_path_factory.mktemp("installed") / "packages"
    install(folder, wheel)
    return folder


@pytest.fixture(scope="module")
def prefix(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """A prefix that is not where it was when things were installed to it."""
    folder = tmp_path_factory.mktemp("prefix")
    for component in "PolicyMapPlatform", "PolicyMapTest", "PolicyMapTestKit", "Python":
        run("cmake", "--install", BUILD, "--component", component, "--prefix", folder / "first")
    return (folder / "first").rename(folder / "second")


def packages_in(prefix: pathlib.Path) -> pathlib.Path:
    return prefix / CACHE["POLICYMAPTEST_PYTHON_DIR"]


def check_program(root: pathlib.Path, packages: pathlib.Path, libraries: list[str]) -> None:
    """A program with these packages makes a lab, with each library once and from below the root."""
    output = json.loads(run(sys.executable, "-I", "-X", "dev", "-W", "error", "-B", "-c", PROGRAM,
                            packages, *libraries))
    assert output["actions"]["action1"] == 7
    assert len(output["types"]) == len(set(output["types"]))
    ours = [file for file in output["files"]
            if re.search(r"/(libKor|libPolicyMap\w*|_kor)\.", file)]
    assert [file for file in ours if not file.startswith(f"{root}/")] == []
    # Where a library without a version in its name is a file of its own, it has no code of ours.
    names = [pathlib.Path(file).name for file in ours]
    loaded = [re.sub(r"\.so\..*", ".so", name) for name in names if ".so." in name]
    assert sorted(loaded) == LIBRARIES
    assert len([name for name in names if name.startswith("_kor.")]) == 1


def check_pytest(packages: pathlib.Path, folder: pathlib.Path) -> None:
    """pytest has the fixtures of the plugin, which nothing but its entry point names."""
    test = folder / "test_it.py"
    test.write_text(f"def test_it(lab):\n    lab.load({POLICY!r})\n"
                    "    assert lab.record('edge').rule('web 10').actions['action1'] == 7\n")
    output = run(sys.executable, "-X", "dev", "-W", "error", "-m", "pytest", "-q", "-p",
                 "no:cacheprovider", "--rootdir", folder, test, PYTHONPATH=str(packages))
    assert "1 passed" in output


# The wheel ----------------------------------------------------------------------------------------


def test_the_wheel_has_the_modules_the_stubs_and_the_libraries(wheel: pathlib.Path) -> None:
    names = zipfile.ZipFile(wheel).namelist()
    modules = {path.relative_to(SOURCE / "python").as_posix()
               for package in ("kor", "policymaptest")
               for path in (SOURCE / "python" / package).rglob("*")
               if path.suffix in (".py", ".pyi") or path.name == "py.typed"}
    generated = {path.relative_to(BUILD / "python").as_posix()
                 for path in (BUILD / "python" / "kor" / "ns").rglob("*.pyi")}
    assert {"kor/__init__.py", "policymaptest/plugin.py"} <= modules and generated
    assert {name for name in names if re.search(r"\.pyi?$|py\.typed$", name)} == (
        modules | generated | {"kor/py.typed"})
    others = sorted(name for name in names
                    if not re.search(r"\.pyi?$|py\.typed$|\.dist-info/", name))
    versions = [os.readlink(BUILD / "platform" / name) for name in LIBRARIES[:2]] + [
        os.readlink(BUILD / name) for name in LIBRARIES[2:]]
    extension = f"kor/_kor{CACHE['PYTHON_MODULE_EXTENSION']}"
    assert others == sorted([extension] + [f"kor/lib/{name}" for name in LIBRARIES + versions])


def test_the_record_is_that_of_the_members(wheel: pathlib.Path) -> None:
    with zipfile.ZipFile(wheel) as archive:
        names = archive.namelist()
        rows = list(csv.reader(archive.read(names[-1]).decode().splitlines()))
        assert names[-1].endswith(".dist-info/RECORD") and rows[-1] == [names[-1], "", ""]
        assert [row[0] for row in rows] == names and len(set(names)) == len(names)
        for name, digest, size in rows[:-1]:
            data = archive.read(name)
            method, _, value = digest.partition("=")
            assert method == "sha256" and int(size) == len(data)
            assert base64.urlsafe_b64decode(value + "=") == hashlib.sha256(data).digest()


def test_the_members_are_sorted_files_without_a_time(wheel: pathlib.Path) -> None:
    members = zipfile.ZipFile(wheel).infolist()
    names = [member.filename for member in members]
    code = [name for name in names if ".dist-info/" not in name]
    assert code == sorted(code) and names[:len(code)] == code
    assert {member.date_time for member in members} == {(1980, 1, 1, 0, 0, 0)}
    for member in members:
        mode = member.external_attr >> 16
        assert stat.S_ISREG(mode)
        assert stat.S_IMODE(mode) == (0o755 if ".so" in member.filename else 0o644)


def test_pip_wheel_makes_the_same_bytes(wheel: pathlib.Path, tmp_path: pathlib.Path) -> None:
    pip("wheel", "--wheel-dir", tmp_path, SOURCE, POLICYMAPTEST_BUILD_DIR=str(BUILD))
    again, = tmp_path.iterdir()
    assert again.name == wheel.name and again.read_bytes() == wheel.read_bytes()


def test_a_hook_makes_the_same_bytes_with_other_rights(
        backend: ModuleType, wheel: pathlib.Path, tmp_path: pathlib.Path,
        monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("POLICYMAPTEST_BUILD_DIR", str(BUILD))
    before = os.umask(0o077)
    try:
        again = tmp_path / backend.build_wheel(str(tmp_path))
    finally:
        os.umask(before)
    assert again.read_bytes() == wheel.read_bytes()


def test_the_tag_is_that_of_the_interpreter(wheel: pathlib.Path) -> None:
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    tag = f"{python}-{python}-linux_{os.uname().machine}"
    distribution = f"policymaptest-{CACHE['CMAKE_PROJECT_VERSION']}"
    assert wheel.name == f"{distribution}-{tag}.whl"
    text = zipfile.ZipFile(wheel).read(f"{distribution}.dist-info/WHEEL").decode()
    assert f"Tag: {tag}\n" in text and "Root-Is-Purelib: false\n" in text


def test_the_metadata_are_those_of_the_wheel_without_building(
        backend: ModuleType, wheel: pathlib.Path, tmp_path: pathlib.Path) -> None:
    name = backend.prepare_metadata_for_build_wheel(str(tmp_path))
    with zipfile.ZipFile(wheel) as archive:
        expected = {each: archive.read(each) for each in archive.namelist()
                    if each.startswith(name) and not each.endswith("/RECORD")}
    assert len(expected) == 4
    assert {path.relative_to(tmp_path).as_posix(): path.read_bytes()
            for path in (tmp_path / name).iterdir()} == expected


def test_the_libraries_of_the_wheel_have_neither_folders_of_the_build_nor_symbols_for_debuggers(
        wheel: pathlib.Path) -> None:
    with zipfile.ZipFile(wheel) as archive:
        libraries = [name for name in archive.namelist() if ".so" in name]
        assert len(libraries) == 2 * len(LIBRARIES) + 1
        for name in libraries:
            data = archive.read(name)
            assert os.fsencode(BUILD) not in data and os.fsencode(SOURCE) not in data
            assert b".dynsym\0" in data and b".symtab\0" not in data


# What is installed --------------------------------------------------------------------------------


@pytest.mark.parametrize("libraries", [[], LIBRARIES, LIBRARIES[::-1]])
def test_a_program_uses_the_libraries_of_the_wheel(
        in_wheel: pathlib.Path, libraries: list[str]) -> None:
    check_program(in_wheel, in_wheel, libraries)


@pytest.mark.parametrize("libraries", [[], LIBRARIES, LIBRARIES[::-1]])
def test_a_program_uses_the_libraries_of_the_prefix(
        prefix: pathlib.Path, libraries: list[str]) -> None:
    check_program(prefix, packages_in(prefix), libraries)


def test_pip_installs_the_source_tree(tmp_path: pathlib.Path) -> None:
    install(tmp_path / "packages", SOURCE, POLICYMAPTEST_BUILD_DIR=str(BUILD))
    check_program(tmp_path, tmp_path / "packages", [])


def test_pytest_finds_the_plugin_of_the_wheel(
        in_wheel: pathlib.Path, tmp_path: pathlib.Path) -> None:
    check_pytest(in_wheel, tmp_path)


def test_pytest_finds_the_plugin_of_the_prefix(
        prefix: pathlib.Path, tmp_path: pathlib.Path) -> None:
    check_pytest(packages_in(prefix), tmp_path)


def test_pytest_finds_the_plugin_of_the_build_tree(tmp_path: pathlib.Path) -> None:
    check_pytest(BUILD / "python", tmp_path)


def test_the_prefix_has_the_files_of_the_wheel(wheel: pathlib.Path, prefix: pathlib.Path) -> None:
    packages = packages_in(prefix)
    installed = {path.relative_to(packages).as_posix() for path in packages.rglob("*")
                 if path.is_file()}
    members = {name for name in zipfile.ZipFile(wheel).namelist()
               if not name.startswith("kor/lib/")}
    assert {name for name in installed ^ members if not name.endswith(
        (".dist-info/RECORD", ".dist-info/WHEEL", ".dist-info/INSTALLER"))} == set()


def test_the_extras_are_known_where_the_packages_are(prefix: pathlib.Path) -> None:
    for folder in packages_in(prefix), BUILD / "python":
        found, = importlib.metadata.distributions(name="policymaptest", path=[str(folder)])
        assert found.version == CACHE["CMAKE_PROJECT_VERSION"]
        assert set(found.metadata.get_all("Provides-Extra") or []) == {
            "distributed", "pandas", "test"}
        assert 'hypothesis; extra == "test"' in (found.requires or [])


# What cannot be built -----------------------------------------------------------------------------


@pytest.fixture
def other_tree(tmp_path: pathlib.Path) -> pathlib.Path:
    """A build tree of these sources in which nothing was built."""
    (tmp_path / "CMakeCache.txt").write_text(
        f"CMAKE_HOME_DIRECTORY:INTERNAL={SOURCE}\nPOLICYMAPTEST_PLATFORM:STRING=embedded\n")
    (tmp_path / "cmake_install.cmake").write_text("")
    return tmp_path


def check_refusal(backend: ModuleType, tree: pathlib.Path, reason: str) -> None:
    with pytest.raises(backend.BuildError, match=reason):
        backend.build_wheel(str(tree), {"build-dir": str(tree)})
    assert list(tree.glob("*.whl")) == []


def test_a_folder_that_is_no_build_tree_is_refused(
        backend: ModuleType, tmp_path: pathlib.Path) -> None:
    check_refusal(backend, tmp_path, "is no build tree: .*CMakeCache.txt")


def test_a_build_tree_without_the_module_is_refused(
        backend: ModuleType, other_tree: pathlib.Path) -> None:
    check_refusal(backend, other_tree, r"has no kor/_kor\.cpython-.*: configure it with")


@pytest.mark.parametrize("old, new, reason", [
    (str(SOURCE), "/elsewhere", "is a build tree of '/elsewhere', not of"),
    ("embedded", "package", "uses an installed platform")])
def test_a_build_tree_of_another_kind_is_refused(
        backend: ModuleType, other_tree: pathlib.Path, old: str, new: str, reason: str) -> None:
    cache = other_tree / "CMakeCache.txt"
    cache.write_text(cache.read_text().replace(old, new))
    check_refusal(backend, other_tree, reason)


def test_there_are_no_source_distributions(backend: ModuleType, tmp_path: pathlib.Path) -> None:
    with pytest.raises(backend.UnsupportedOperation, match="build a wheel"):
        backend.build_sdist(str(tmp_path))
