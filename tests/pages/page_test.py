#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests the HTML pages of reports in a browser.

    page_test.py --run RUN.html --sweep SWEEP.html [--pictures DIR]

What is expected comes from the data in the pages. The status is 0 if all is well, 1 if a test
fails, and 77 if chromedriver is missing.
"""

import argparse
import base64
import collections
import contextlib
import json
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.request

SKIPPED = 77
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
KEYS = {"Enter": "\ue007", "Escape": "\ue00c", "Left": "\ue012", "Up": "\ue013",
        "Right": "\ue014", "Down": "\ue015", "End": "\ue010", "Home": "\ue011"}
HOSTILE = '</script><img src=x onerror="console.error(1)"><b>bold</b>'
FLAGS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--disable-dev-shm-usage", "--hide-scrollbars",
         "--force-prefers-reduced-motion"]

options = None
driver = None


class Driver:
    """A browser, over the WebDriver protocol."""

    def __init__(self, program):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.base = f"http://127.0.0.1:{port}"
        self.profile = tempfile.mkdtemp()
        self.process = subprocess.Popen([program, f"--port={port}"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        self.opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        self.session = ""
        try:
            self._begin()
        except BaseException:
            self.end()
            raise

    def _begin(self):
        wait_for(self._is_ready, "chromedriver does not respond")
        wanted = {"browserName": "chrome",
                  "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"},
                  "goog:chromeOptions": {"args": [*FLAGS, f"--user-data-dir={self.profile}"]}}
        begun = self.call("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})
        self.session = f"/session/{begun['sessionId']}"

    def _is_ready(self):
        try:
            return self.call("GET", "/status")["ready"]
        except OSError:
            return False

    def end(self):
        if self.session:
            with contextlib.suppress(OSError, RuntimeError):
                self.call("DELETE", self.session)
        self.process.terminate()
        self.process.wait(10)
        shutil.rmtree(self.profile, ignore_errors=True)

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, method=method,
                                         headers={"Content-Type": "application/json"})
        try:
            with self.opener.open(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(json.load(error)["value"]["message"]) from None

    def post(self, path, body=None):
        return self.call("POST", self.session + path, body or {})

    def open(self, url):
        self.post("/url", {"url": url})

    def js(self, script, *arguments):
        return self.post("/execute/sync", {"script": script, "args": list(arguments)})

    def texts(self, selector):
        return self.js("return [...document.querySelectorAll(arguments[0])]"
                       ".map((each) => each.textContent)", selector)

    def count(self, selector):
        return self.js("return document.querySelectorAll(arguments[0]).length", selector)

    def find(self, selector):
        return self.post("/element", {"using": "css selector", "value": selector})[ELEMENT]

    def click(self, selector):
        element = self.find(selector)
        deadline = time.monotonic() + 10
        while True:
            self.js("arguments[0].scrollIntoView({block: 'center', behavior: 'instant'})",
                    {ELEMENT: element})
            try:
                self.post(f"/element/{element}/click")
                return
            except RuntimeError as error:
                # The page still grows, and what sticks to its top is in front.
                if "intercepted" not in str(error) or time.monotonic() > deadline:
                    raise
            time.sleep(0.1)

    def keys(self, *keys):
        """Presses keys wherever the focus is."""
        actions = []
        for key in keys:
            value = KEYS.get(key, key)
            actions += [{"type": "keyDown", "value": value}, {"type": "keyUp", "value": value}]
        self.post("/actions", {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def focused(self):
        return self.js("const at = document.activeElement; return at.id || at.dataset.cell || ''")

    def resize(self, width, height):
        """Of what the page sees; a window cannot be as narrow as a telephone."""
        self.command("Emulation.setDeviceMetricsOverride",
                     {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def prefer(self, scheme):
        self.command("Emulation.setEmulatedMedia",
                     {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def command(self, name, parameters):
        return self.post("/goog/cdp/execute", {"cmd": name, "params": parameters})

    def log(self, kind):
        return self.post("/se/log", {"type": kind})

    def picture(self, path):
        path.write_bytes(base64.b64decode(self.call("GET", self.session + "/screenshot")))


def wait_for(condition, message):
    end = time.monotonic() + 20
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(message)
        time.sleep(0.03)


def data_text(page):
    return re.search(r'<script type="application/json" id="data">(.*?)</script>', page, re.S)


def number_in(text):
    return int(text.replace(",", ""))


class PageTest(unittest.TestCase):
    """What pages of both kinds have in common; `page` is the option that names the file."""

    page = ""

    @classmethod
    def setUpClass(cls):
        if not cls.page:
            raise unittest.SkipTest("for the classes below")
        cls.path = getattr(options, cls.page).resolve()
        cls.source = cls.path.read_text(encoding="utf-8")
        cls.data = json.loads(data_text(cls.source)[1])

    def setUp(self):
        driver.resize(1280, 800)
        driver.prefer("light")
        self.open()
        driver.log("browser")

    def tearDown(self):
        severe = [each["message"] for each in driver.log("browser") if each["level"] == "SEVERE"]
        self.assertEqual([], severe)

    def open(self, fragment="", path=None):
        driver.open("about:blank")  # only another fragment would not load the page again
        driver.open((path or self.path).as_uri() + fragment)
        self.settle()

    def settle(self):
        """Waits until a count is there, and lists are complete."""
        wait_for(lambda: driver.texts("#count") not in ([], [""]), "no count")

    def counts(self):
        """N and M of "N of M ..."."""
        found = re.match(r"([\d,]+) of ([\d,]+)", driver.texts("#count")[0])
        return number_in(found[1]), number_in(found[2])

    def search(self, text, expected):
        """Types a text, and waits for the expected number of matches."""
        driver.click("#search")
        driver.keys("Escape", *text)
        wait_for(lambda: self.counts()[0] == expected,
                 f"search for '{text}': {expected} expected: {driver.texts('#count')}")

    def set_checkbox(self, name, on):
        selector = f'input[name="{name}"]'
        if driver.js("return document.querySelector(arguments[0]).checked", selector) != on:
            driver.click(selector)

    def select(self, name, value):
        driver.js("const at = document.querySelector(`select[name=${arguments[0]}]`);"
                  "at.value = arguments[1]; at.dispatchEvent(new Event('change'))", name, value)

    # A page that differs only in its data.
    @contextlib.contextmanager
    def page_of(self, data):
        place = data_text(self.source)
        text = json.dumps(data).replace("<", "\\u003c")
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "page.html"
            path.write_text(self.source[:place.start(1)] + text + self.source[place.end(1):],
                            encoding="utf-8")
            yield path


class CommonTests:
    def test_needs_no_network(self):
        place = data_text(self.source)
        page = self.source[:place.start(1)] + self.source[place.end(1):]
        self.assertEqual([], re.findall(r"https?://(?!www\.w3\.org/)[^\s\"']*", page))
        driver.log("performance")
        self.open()
        requested = []
        for line in driver.log("performance"):
            message = json.loads(line["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                requested.append(message["params"]["request"]["url"])
        self.assertTrue(any(each.startswith(self.path.as_uri()) for each in requested), requested)
        self.assertEqual([], [each for each in requested
                              if not each.startswith(("file:", "data:", "about:"))])

    def test_title(self):
        self.assertEqual([self.data["title"]], driver.texts("h1"))
        self.assertIn(self.data["title"], driver.js("return document.title"))

    def test_landmarks_and_headings(self):
        for selector in ("header", "main", "nav[aria-label]", "[role=search]",
                         "[role=status][aria-live=polite]"):
            self.assertGreaterEqual(driver.count(selector), 1, selector)
        unnamed = driver.js("return [...document.querySelectorAll('section')].filter((each) => "
                            "!document.getElementById(each.getAttribute('aria-labelledby')))"
                            ".length")
        self.assertEqual(0, unnamed)
        self.assertEqual(0, driver.count("th:not([scope])"))
        self.assertGreater(driver.count("th[scope=col]"), 0)
        bare = driver.js("return [...document.querySelectorAll('input, select')].filter((each) => "
                         "!each.labels.length && !each.getAttribute('aria-label')).length")
        self.assertEqual(0, bare)

    def test_slash_and_escape(self):
        driver.js("document.activeElement.blur()")
        driver.keys("/")
        self.assertEqual("search", driver.focused())
        self.assertEqual("", driver.js("return document.activeElement.value"))
        driver.keys(*"no such text")
        wait_for(lambda: self.counts()[0] == 0, "the search has no effect")
        driver.keys("Escape")
        wait_for(lambda: self.counts()[0] == self.counts()[1], "Escape does not clear it")
        self.assertEqual("", driver.js("return document.getElementById('search').value"))
        self.assertEqual("", driver.js("return location.hash"))

    def test_contrast_in_light_and_dark(self):
        pages = {}
        for scheme in ("light", "dark"):
            driver.prefer(scheme)
            self.open(self.detail())
            pages[scheme] = driver.js("return getComputedStyle(document.body).backgroundColor")
            self.assertEqual([], driver.js(CONTRAST), scheme)
        self.assertNotEqual(pages["light"], pages["dark"])

    def test_theme_button_overrides(self):
        color = "return getComputedStyle(document.body).backgroundColor"
        light = driver.js(color)
        driver.click("#theme")
        dark = driver.js(color)
        self.assertNotEqual(light, dark)
        self.assertEqual([], driver.js(CONTRAST))
        driver.prefer("dark")
        driver.click("#theme")
        self.assertEqual(light, driver.js(color))

    def test_narrow_window(self):
        driver.resize(400, 800)
        self.open(self.detail())
        self.assertEqual(400, driver.js("return innerWidth"))
        self.assertLessEqual(driver.js("return document.documentElement.scrollWidth"), 400)

    def test_visible_focus(self):
        driver.keys("/")
        style = driver.js("const style = getComputedStyle(document.activeElement);"
                          "return [style.outlineStyle, parseFloat(style.outlineWidth)]")
        self.assertEqual("solid", style[0])
        self.assertGreaterEqual(style[1], 2)

    def test_no_data(self):
        place = data_text(self.source)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "page.html"
            path.write_text(self.source[:place.start(1)] + "{" + self.source[place.end(1):],
                            encoding="utf-8")
            driver.open(path.as_uri())
            self.assertIn("no data", driver.texts("main")[0])


# Returns the visible elements with text whose contrast with their background is below 4.5.
CONTRAST = """
const canvas = document.createElement('canvas').getContext('2d', {willReadFrequently: true});
const rgba = (color) => {
  canvas.clearRect(0, 0, 1, 1);
  canvas.fillStyle = color;
  canvas.fillRect(0, 0, 1, 1);
  return [...canvas.getImageData(0, 0, 1, 1).data];
};
const light = ([r, g, b]) => {
  const [x, y, z] = [r, g, b].map((c) => c / 255)
    .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
  return 0.2126 * x + 0.7152 * y + 0.0722 * z;
};
const known = new Map();
const colorOf = (text) => known.get(text) || known.set(text, rgba(text)).get(text);
const behind = (element) => {
  for (let at = element; at; at = at.parentElement) {
    const color = colorOf(getComputedStyle(at).backgroundColor);
    if (color[3] === 255) return color;
  }
  return [255, 255, 255, 255];
};
const low = [];
for (const element of [...document.querySelectorAll('body *')].slice(0, 4000)) {
  const own = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
  if (!own || !element.checkVisibility()) continue;
  const [a, b] = [light(colorOf(getComputedStyle(element).color)), light(behind(element))];
  const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  if (contrast < 4.5) low.push(`${element.outerHTML.slice(0, 90)} ${contrast.toFixed(2)}`);
}
return low;
"""


def failed(entry):
    if entry.get("error") or entry.get("threw"):
        return True
    return (entry["kind"] == "status" and entry.get("operation") in ("failure", "error")
            and entry.get("text", "") not in ("", "no failure"))


class RunTest(CommonTests, PageTest):
    page = "run"

    def setUp(self):
        super().setUp()
        self.entries = self.data["journal"]

    def detail(self):
        return ""

    def settle(self):
        super().settle()
        while driver.count("#timeline .all"):
            driver.click("#timeline .all")
            wait_for(lambda: not driver.count("#timeline .all"), "the list is not complete")

    def rows(self):
        self.settle()
        return driver.js("return [...document.querySelectorAll('#timeline tr.row')]"
                         ".map((each) => Number(each.dataset.number))")

    def expect_rows(self, wanted):
        expected = [each["number"] for each in self.entries if wanted(each)]
        wait_for(lambda: self.counts() == (len(expected), len(self.entries)),
                 f"{len(expected)} of {len(self.entries)} expected: {driver.texts('#count')}")
        self.assertEqual(expected, self.rows())

    def test_a_row_per_entry(self):
        self.expect_rows(lambda entry: True)

    def test_steps_are_headings(self):
        used = collections.Counter()
        for entry in self.entries:
            begun = [i for i, step in enumerate(self.data["steps"])
                     if step["entry"] <= entry["number"]]
            used[begun[-1] if begun else -1] += 1
        headings = driver.texts("#timeline tr.step")
        self.assertEqual(len(used), len(headings))
        for (index, count), heading in zip(sorted(used.items()), headings):
            if index >= 0:
                self.assertIn(self.data["steps"][index]["name"].split("<")[0], heading)
            self.assertRegex(heading, rf"\b{count:,} entr(y|ies)\b")

    def test_search(self):
        members = ("operation", "class", "match", "error", "intf", "policy", "subRule", "cause",
                   "text")
        for member in members:
            # Numbers and signs may be in other columns too.
            values = collections.Counter(each[member] for each in self.entries
                                         if re.fullmatch(r"[a-z][\w ./:#()-]{3,}",
                                                         each.get(member, ""), re.I | re.A))
            if not values:
                continue
            needle = min(values, key=lambda value: (values[value], value))
            with self.subTest(member=member, needle=needle):
                def has(entry, needle=needle.lower()):
                    return any(needle in value.lower() for value in entry.values()
                               if isinstance(value, str))
                expected = sum(map(has, self.entries))
                self.assertGreater(expected, 0)
                self.search(needle, expected)
                self.expect_rows(has)

    def test_kinds(self):
        for kind in ("call", "result", "test", "status"):
            with self.subTest(kind=kind):
                self.set_checkbox("kind-" + kind, False)
                self.expect_rows(lambda entry, kind=kind: entry["kind"] != kind)
                self.set_checkbox("kind-" + kind, True)
        self.expect_rows(lambda entry: True)

    def test_policy(self):
        policies = sorted({each["policy"] for each in self.entries if "policy" in each})
        offered = driver.js("return [...document.querySelectorAll('select[name=policy] option')]"
                            ".map((each) => each.value)")
        self.assertEqual(["", *policies], offered)
        for policy in policies[:3]:
            self.select("policy", policy)
            self.expect_rows(lambda entry, policy=policy: entry.get("policy") == policy)

    def test_failures_only(self):
        self.set_checkbox("failures", True)
        self.expect_rows(failed)
        marked = driver.count("#timeline tr.failed")
        self.assertEqual(sum(map(failed, self.entries)), marked)
        without_sign = [each for each in driver.texts("#timeline tr.failed") if "✕" not in each]
        self.assertEqual([], without_sign)

    def test_address_restores_the_view(self):
        self.set_checkbox("kind-call", False)
        policy = next(each["policy"] for each in self.entries if "policy" in each)
        self.select("policy", policy)
        self.set_checkbox("changed", True)
        rows = self.rows()
        fragment = driver.js("return location.hash")
        self.assertNotEqual("", fragment)
        driver.post("/refresh")
        self.assertEqual(rows, self.rows())
        self.assertEqual(fragment, driver.js("return location.hash"))
        self.assertFalse(driver.js("return document.querySelector('[name=kind-call]').checked"))
        self.assertTrue(driver.js("return document.querySelector('[name=changed]').checked"))
        self.expect_rows(lambda entry: entry["kind"] != "call" and entry.get("policy") == policy)

    def test_collapse(self):
        toggle = "#timeline tr.step .toggle"
        first = self.rows()
        driver.click(toggle)
        self.assertEqual("false", driver.js(
            "return document.querySelector(arguments[0]).getAttribute('aria-expanded')", toggle))
        self.assertLess(len(self.rows()), len(first))
        driver.keys("Enter")  # the focus is still there
        self.assertEqual(first, self.rows())
        driver.click("#collapse")
        alone = [each["number"] for each in self.entries
                 if not (each["kind"] == "call" and each.get("cause"))]
        self.assertLessEqual(set(self.rows()), set(alone))
        driver.click("#expand")
        self.assertEqual(first, self.rows())

    def records_of(self, index):
        return {(each["policy"], each["direction"], each["option"]): {
            (rule["class"], rule["acl"], rule["seq"]): rule for rule in each["rules"]}
            for each in self.data["steps"][index]["records"]}

    def test_records(self):
        last = len(self.data["steps"]) - 1
        for index_from, index_to in {(0, last), (last, 0), (0, 0)}:
            self.select("from", str(index_from))
            self.select("to", str(index_to))
            before, after = self.records_of(index_from), self.records_of(index_to)
            expected = collections.Counter()
            for key in before.keys() | after.keys():
                old, new = before.get(key, {}), after.get(key, {})
                expected["added"] += len(new.keys() - old.keys())
                expected["removed"] += len(old.keys() - new.keys())
                expected["changed"] += sum(old[each] != new[each] for each in old.keys() & new)
                expected["all"] += len(old.keys() | new)
            while driver.count("#records .all"):
                driver.js("document.querySelectorAll('#records .all').forEach((x) => x.click())")
                time.sleep(0.05)
            with self.subTest(before=index_from, after=index_to):
                self.assertEqual(len(before.keys() | after), driver.count("#records details"))
                self.assertEqual(expected["all"], driver.count("#records tr.row"))
                for mark in ("added", "removed", "changed"):
                    self.assertEqual(expected[mark], driver.count(f"#records tr.{mark}"), mark)
                    for text in driver.texts(f"#records tr.{mark} .mark"):
                        self.assertIn(mark, text)

    def test_inputs(self):
        inputs = self.data.get("inputs", [])
        self.assertEqual(len(inputs), driver.count("#inputs details"))
        if inputs and inputs[0]["text"].isascii():
            self.assertEqual(inputs[0]["text"].replace("\r\n", "\n"), driver.texts("#inputs pre")[0])

    def test_findings_and_faults(self):
        findings = self.data.get("findings", [])
        self.assertEqual(len(findings), driver.count("#findings li"))
        for text, finding in zip(driver.texts("#findings li"), findings):
            self.assertIn(finding, text)
        faults = self.data.get("faults", [])
        shown = driver.texts("#faults .notice > ul > li, #faults > ul > li")
        self.assertEqual(len(faults), len(shown))
        unmet = [each for each in faults if not each.get("met")]
        self.assertEqual(len(unmet), sum("not met" in text for text in shown))

    def test_hostile_text(self):
        data = json.loads(json.dumps(self.data))
        data["title"] = HOSTILE
        data["journal"][-1]["text"] = HOSTILE
        data["findings"] = [HOSTILE]
        data["steps"][-1]["name"] = HOSTILE
        data["inputs"] = [{"name": HOSTILE, "text": HOSTILE}]
        with self.page_of(data) as path:
            self.open(path=path)
            self.assertEqual([HOSTILE], driver.texts("h1"))
            self.assertIn(HOSTILE, driver.texts("#findings li")[0])
            self.assertIn(HOSTILE, driver.texts("#inputs pre")[0])
            self.assertEqual(0, driver.count("img, main b b, h1 b"))

    def test_unseen_characters_are_shown(self):
        data = json.loads(json.dumps(self.data))
        data["findings"] = ["a\u202eb\x07c"]
        with self.page_of(data) as path:
            self.open(path=path)
            self.assertIn("a\\u{202e}b\\u{7}c", driver.texts("#findings li")[0])

    def test_empty_run(self):
        with self.page_of({"kind": "run", "title": "nothing"}) as path:
            self.open(path=path)
            self.assertEqual(["0 of 0 entries"], driver.texts("#count"))
            self.assertEqual(0, driver.count("tr.row"))


class SweepTest(CommonTests, PageTest):
    page = "sweep"

    def setUp(self):
        super().setUp()
        self.cases = self.data["cases"]

    def detail(self):
        wanted = [each for each in self.cases if each["findings"] and each.get("operation")]
        return f"#cell={self.key(wanted[0])}&case={wanted[0]['case']}" if wanted else ""

    @staticmethod
    def key(case):
        return f"{case['operation']}:{case['call']}"

    def cells(self, wanted=lambda case: True):
        cells = collections.defaultdict(list)
        for case in self.cases:
            if case.get("operation") and wanted(case):
                cells[self.key(case)].append(case)
        return cells

    def shown_cells(self):
        return driver.js("return Object.fromEntries([...document.querySelectorAll('td.cell')]"
                         ".map((each) => [each.dataset.cell, each.textContent]))")

    @staticmethod
    def sign(cases):
        unmet = [each for each in cases if not each["injected"] and len(each["findings"]) < 2]
        if any(each["findings"] and each not in unmet for each in cases):
            return "✕"
        return "○" if unmet else "✓"

    def expect_cells(self, wanted):
        matching = sum(map(wanted, self.cases))
        wait_for(lambda: self.counts() == (matching, len(self.cases)),
                 f"{matching} of {len(self.cases)} expected: {driver.texts('#count')}")
        expected = {key: self.sign(cases) for key, cases in self.cells(wanted).items()}
        self.assertEqual(expected, self.shown_cells())

    def test_a_cell_per_operation_and_call(self):
        self.expect_cells(lambda case: True)
        wrong = [title for key, title in driver.js(
            "return [...document.querySelectorAll('td.cell')].map((x) => [x.dataset.cell, x.title])")
            if f"{len(self.cells()[key])} case" not in title]
        self.assertEqual([], wrong)

    def test_wide_blocks_have_fifty_calls(self):
        most = max((each["call"] for each in self.cases if each.get("operation")), default=0)
        self.assertEqual((most + 49) // 50, driver.count(".matrix tbody"))

    def test_filters(self):
        for name in ("mode", "effect"):
            for value in sorted({each[name] for each in self.cases if each.get(name)}):
                with self.subTest(filter=name, value=value):
                    self.select(name, value)
                    self.expect_cells(lambda case, value=value: case.get(name) == value)
            self.select(name, "")
        self.set_checkbox("findings", True)
        self.expect_cells(lambda case: bool(case["findings"]))

    def test_search(self):
        needles = [self.cases[len(self.cases) // 2]["case"], "nth=1 "]
        needles += [each["findings"][0] for each in self.cases if each["findings"]][:1]
        for needle in needles:
            def has(case, needle=needle.strip().lower()):
                return any(needle in text.lower() for text in (case["case"], *case["findings"]))
            with self.subTest(needle=needle):
                self.search(needle, sum(map(has, self.cases)))
                self.expect_cells(has)

    def test_one_cell_is_in_the_tab_order(self):
        self.assertEqual(1, driver.count(".matrix [tabindex='0']"))
        self.assertEqual(1, driver.count("table[role=grid][aria-label]"))

    def test_keys_move_in_the_matrix(self):
        calls = collections.defaultdict(set)
        for case in self.cases:
            if case.get("operation"):
                calls[case["operation"]].add(case["call"])
        operations = list(calls)
        operation = max(operations[:-1] or operations, key=lambda name: len(calls[name]))
        row = sorted(calls[operation])
        driver.js("document.querySelector(`[data-cell='${arguments[0]}']`).focus()",
                  driver.js("return document.querySelector('.matrix [tabindex=\"0\"]').dataset.cell"))
        for _ in range(operations.index(operation)):
            driver.keys("Down")
        driver.keys("Home")
        self.assertEqual(f"{operation}:{row[0]}", driver.focused())
        if len(row) > 1:
            driver.keys("Right")
            self.assertEqual(f"{operation}:{row[1]}", driver.focused())
            driver.keys("Left")
            self.assertEqual(f"{operation}:{row[0]}", driver.focused())
        driver.keys("Left")
        self.assertEqual(f"{operation}:{row[0]}", driver.focused())
        driver.keys("End")
        self.assertEqual(f"{operation}:{row[-1]}", driver.focused())
        driver.keys("Right")
        self.assertEqual(f"{operation}:{row[-1]}", driver.focused())
        at = operations.index(operation)
        if at + 1 < len(operations):
            below = operations[at + 1]
            nearest = min(sorted(calls[below]), key=lambda call: abs(call - row[-1]))
            driver.keys("Down")
            self.assertEqual(f"{below}:{nearest}", driver.focused())
            driver.keys("Up")
            nearest = min(row, key=lambda call: abs(call - nearest))
            self.assertEqual(f"{operation}:{nearest}", driver.focused())
        self.assertEqual(1, driver.count(".matrix [tabindex='0']"))

    def journal_of(self, case):
        return [self.data["lines"][at] for at in case.get("journal", [])]

    def expect_case(self, case):
        self.assertEqual([case["case"]], driver.texts("#case h3"))
        self.assertEqual(case["findings"], driver.texts("#case .case-findings li"))
        while driver.count("#case .all"):
            driver.click("#case .all")
            wait_for(lambda: not driver.count("#case .all"), "the journal is not complete")
        shown = [text.lstrip("✕\u2002 ") for text in driver.texts("#case .journal li")]
        self.assertEqual([line.lstrip() for line in self.journal_of(case)], shown)

    def test_enter_opens_a_cell(self):
        cells = self.cells()
        with_findings = [key for key, cases in cells.items() if any(x["findings"] for x in cases)]
        for key in (with_findings[:1] or []) + [list(cells)[-1]]:
            with self.subTest(cell=key):
                driver.js("document.querySelector(`[data-cell='${arguments[0]}']`).focus()", key)
                driver.keys("Enter")
                self.assertEqual(key, driver.focused())
                self.assertEqual([each["case"] for each in cells[key]],
                                 driver.texts("#cell .cases tr.row button"))
                self.expect_case(next((x for x in cells[key] if x["findings"]), cells[key][0]))
                chosen = cells[key][-1]
                driver.click(f'#cell tr[data-case="{chosen["case"]}"] button')
                self.expect_case(chosen)
                self.assertEqual("true", driver.js(
                    "return document.querySelector('#cell tr.chosen button').ariaPressed"))

    def test_other_cases(self):
        others = [each["case"] for each in self.cases if not each.get("operation")]
        self.assertEqual(others[:200], driver.texts("#others tr.row button"))

    def test_address_restores_the_view(self):
        key = next(iter(self.cells()))
        driver.click(f"[data-cell='{key}']")
        mode = self.cells()[key][0]["mode"]
        self.select("mode", mode)
        fragment = driver.js("return location.hash")
        case = driver.texts("#case h3")
        cases = driver.texts("#cell .cases tr.row button")
        driver.post("/refresh")
        self.settle()
        self.assertEqual(fragment, driver.js("return location.hash"))
        self.assertEqual(case, driver.texts("#case h3"))
        self.assertEqual(cases, driver.texts("#cell .cases tr.row button"))
        self.assertEqual([x["case"] for x in self.cells()[key] if x["mode"] == mode], cases)
        self.expect_cells(lambda each: each["mode"] == mode)

    def test_hostile_text(self):
        data = json.loads(json.dumps(self.data))
        case = next(each for each in data["cases"] if each.get("operation"))
        case["findings"] = [HOSTILE]
        case["journal"] = [len(data["lines"])]
        data["lines"].append(HOSTILE)
        with self.page_of(data) as path:
            self.open(f"#cell={self.key(case)}&case={case['case']}", path)
            self.assertEqual([HOSTILE], driver.texts("#case .case-findings li"))
            self.assertIn(HOSTILE, driver.texts("#case .journal li")[0])
            self.assertEqual(0, driver.count("img, #case b"))

    def test_empty_sweep(self):
        with self.page_of({"kind": "sweep", "title": "nothing", "cases": []}) as path:
            self.open(path=path)
            self.assertEqual(["0 of 0 cases, 0 with findings"], driver.texts("#count"))
            self.assertEqual(0, driver.count("td.cell"))


def take_pictures(folder):
    folder.mkdir(parents=True, exist_ok=True)
    driver.resize(1280, 800)
    for page in ("run", "sweep"):
        for scheme in ("light", "dark"):
            driver.prefer(scheme)
            driver.open("about:blank")
            driver.open(getattr(options, page).resolve().as_uri())
            wait_for(lambda: driver.texts("#count") not in ([], [""]), "no count")
            driver.picture(folder / f"{page}-{scheme}.png")


def main():
    global options, driver
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--run", type=pathlib.Path, required=True, metavar="RUN.html")
    parser.add_argument("--sweep", type=pathlib.Path, required=True, metavar="SWEEP.html")
    parser.add_argument("--pictures", type=pathlib.Path, metavar="DIR")
    parser.add_argument("--verbose", action="store_true")
    parser.add_argument("--only", metavar="PATTERN", help="only tests whose names contain it")
    options = parser.parse_args()
    program = shutil.which("chromedriver")
    if program is None:
        print("SKIPPED: chromedriver is missing")
        return SKIPPED
    driver = Driver(program)
    try:
        loader = unittest.TestLoader()
        loader.testNamePatterns = [f"*{options.only}*"] if options.only else None
        suite = unittest.TestSuite(map(loader.loadTestsFromTestCase, (RunTest, SweepTest)))
        result = unittest.TextTestRunner(verbosity=2 if options.verbose else 1).run(suite)
        if options.pictures:
            take_pictures(options.pictures)
    finally:
        driver.end()
    return 0 if result.wasSuccessful() and result.testsRun else 1


if __name__ == "__main__":
    sys.exit(main())
