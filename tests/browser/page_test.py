#!/usr/bin/python3
"""Looks at pages of the batch program with a real browser, headless Chromium, which loads nothing but them.

Usage: page_test.py FOLDER_OF_PROGRAMS FOLDER_FOR_PICTURES
"""
import json
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

program = os.path.join(os.path.abspath(sys.argv[1]), "quillmere-batch")
pictures = os.path.abspath(sys.argv[2])
HOSTILE = ["</script><script>alert(1)</script>", "<img/src=x/onerror=alert(1)>", "__proto__", "\"'&lt;", "toString"]
CODES = HOSTILE + [f"i_thing_{number}" for number in range(2000 - len(HOSTILE))]
BLOCKS = 1_500_000


def make_world(file):
    """Writes a world of which the run removes rectangles. Returns each block as (facet, x, y, whether it goes)."""
    numbers = random.Random(3)
    points = []
    towns = [(numbers.randrange(300, 6700), numbers.randrange(300, 3300)) for _ in range(50)]
    for number in range(BLOCKS):
        code = int(len(CODES) * numbers.random() ** 2)
        x, y = (int(abs(numbers.gauss(middle, 90))) for middle in towns[number % 50])
        facet = number % 7 % 3
        points.append((facet, x, y, code % 9 == 0 and x % 280 <= 200 and y % 200 <= 120))
        file.write(f"[WORLDITEM {CODES[code]}]\nP={x},{y},0,{facet}\n\n")
    file.write("[EOF]\n")
    return points


def make_list(file):
    """Writes every ninth code, and rectangles 280 apart from left to right and 200 from top to bottom."""
    file.writelines(f"entry\n{code}\n" for code in CODES[::9])
    file.write("</ITEMS>\n")
    for number in range(501):
        x, y = number % 26 * 280, number // 26 * 200
        file.write(f"Town <b>{number}</b>\n{x}\n{x + 200}\n{y}\n{y + 120}\n")
    file.write("</RECTANGLES>\n")


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()  # removed at exit
        os.chdir(cls.folder.name)
        with open("world.scp", "w") as world, open("list.lst", "w") as filters, open("uneven.scp", "w") as uneven:
            cls.points = make_world(world)
            make_list(filters)
            uneven.writelines(f"[A {code}]\n\n" for code in range(6000))
            uneven.writelines(f"[A b]\nP={x},{x},0,{facet}\n\n" for facet, x in
                              ((0, 0), (0, 6000), (1, -2**31), (1, 2**31 - 1), (2, 5), (3, 2**20), (3, 2**20 + 99)))
        for name, arguments in (
                ("dry-run", "--dry-run --list list.lst --items equal --rectangles in world.scp"),
                ("failed", "--list list.lst --items equal --max-removed 0% world.scp out.scp"),
                ("survey", "survey world.scp"), ("uneven", "survey uneven.scp"), ("empty", "survey /dev/null")):
            subprocess.run([program, *arguments.split(), "--page", f"{name}.html"], capture_output=True)
        options = webdriver.ChromeOptions()
        for switch in ("--headless=new", "--no-sandbox", "--disable-background-networking"):
            options.add_argument(switch)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        cls.addClassCleanup(cls.browser.quit)

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])
        self.assertEqual(self.script("return performance.getEntriesByType('resource').length"), 0)
        self.assertLess(self.script("return performance.getEntriesByType('navigation')[0].loadEventEnd"), 3000)

    def show(self, name, width=1400, colours="light"):
        """Loads a page, and returns the report that it holds."""
        cdp = self.browser.execute_cdp_cmd
        cdp("Emulation.setDeviceMetricsOverride",
            {"width": width, "height": 1000, "deviceScaleFactor": 1, "mobile": False})
        cdp("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": colours}]})
        self.browser.get(f"file://{self.folder.name}/{name}.html")
        return json.loads(self.one("#report").get_property("textContent"))

    def script(self, text):
        return self.browser.execute_script(text)

    def wait_for_zoom(self):
        """Waits until the map has drawn what it was told, and its animation has ended."""
        self.browser.execute_async_script("""
            const done = arguments[0], next = window.requestAnimationFrame;
            const look = () => document.querySelector(".leaflet-zoom-anim") ? next(look) : done();
            next(() => next(look));""")

    def one(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def shown_rows(self):
        rows = self.script("return [...document.querySelectorAll('#codes tbody tr')]"
                           ".map(row => [...row.cells].map(cell => cell.textContent))")
        return [(code, *(int(number.replace(",", "")) for number in numbers[:-1])) for code, *numbers in rows]

    def test_sums_and_table_of_codes(self):
        report = self.show("dry-run")
        removed = sum(goes for *_, goes in self.points)
        self.assertEqual([each.text.replace(",", "") for each in self.all(".sum strong")],
                         [str(number) for number in (BLOCKS, removed, BLOCKS - removed)])
        rows = [(row["code"], row["blocks"], row["removed"], row["kept"]) for row in report["codes"]]
        self.assertEqual(self.shown_rows(), rows[:200])
        self.one("#show-all").click()
        self.assertEqual(self.shown_rows(), rows)
        self.one("#search").send_keys("THING_19")
        found = [row for row in rows if "thing_19" in row[0]]
        self.assertEqual(self.shown_rows(), found)
        self.assertEqual(self.one("#shown").text, f"{len(found)} of 2,000 codes")
        for column in (1, 2, 3, 0):
            heading = self.one(f"#codes thead th:nth-child({column + 1})")
            for order in ("ascending", "descending") if column < 2 else ("descending", "ascending"):
                heading.find_element(By.TAG_NAME, "button").click()
                self.assertEqual(heading.get_attribute("aria-sort"), order)
                self.assertEqual([row[column] for row in self.shown_rows()],
                                 sorted((row[column] for row in found), reverse=order == "descending"))
        self.show("uneven")
        self.one("#show-all").click()
        self.assertEqual((self.one("#show-all").text, len(self.shown_rows())), ("Show all 6,001", 5200))

    def test_a_click_tells_what_lies_there(self):
        self.show("dry-run")
        for facet, zoom in ((0, 0), (0, 3), (1, 4), (2, 0)):
            self.one(f"#tab-{facet}").click()
            for _ in range(zoom):
                self.one("#map").send_keys("+")
                self.wait_for_zoom()
            for x, y in ((60, 40), (-31, -22), (11, 12), (-100, 7)):
                ActionChains(self.browser).move_to_element_with_offset(self.one("#map"), x, y).click().perform()
                x1, x2, y1, y2, *told = map(int, re.findall(r"-?\d+", self.one("#found").text.replace(",", ""))[:7])
                there = [goes for at, px, py, goes in self.points if at == facet and x1 <= px <= x2 and y1 <= py <= y2]
                self.assertEqual(told, [len(there), there.count(True), there.count(False)])
                px, py = map(int, re.findall(r"-?\d+", self.one("#position").text))
                self.assertTrue(x1 <= px <= x2 and y1 <= py <= y2, (px, py))

    def test_layers_are_switched(self):
        self.show("dry-run")
        shown = "#map canvas, #map path.rectangle"
        self.assertGreater(len(self.all(shown)), 100)
        stays, goes = self.script("""
            return [...document.querySelectorAll("#map canvas")].map(c =>
                c.getContext("2d").getImageData(0, 0, c.width, c.height).data.filter((v, i) => i % 4 === 3 && v).length)""")
        self.assertTrue(0 < goes < stays / 4, (stays, goes))  # points that are not empty; few blocks go
        rectangle = self.one("#map path.rectangle").rect
        self.assertAlmostEqual(rectangle["height"] / rectangle["width"], 121 / 201, 1)
        for box in self.all("#layers input"):
            box.click()
        self.assertEqual(self.all(shown), [])
        self.one("#tab-1").click()
        self.assertEqual(self.all(shown), [])

    def test_each_facet_fits_into_the_map(self):
        self.show("uneven")
        for facet in (2, 1, 3, 0, 1, 2, 0):
            self.one(f"#tab-{facet}").click()
            left, right, low, high = self.script("""
                const [map, picture] = ["#map", "#map canvas"].map(s => document.querySelector(s).getBoundingClientRect());
                return [picture.left - map.left, map.right - picture.right, picture.width, map.width];""")
            self.assertTrue(min(left, right) >= 0 and 50 < low <= high, (facet, left, right, low))

    def test_keyboard(self):
        self.show("dry-run")
        selected = "[role=tab][aria-selected=true]"
        self.one(selected).send_keys(Keys.HOME)
        for key, tab in ((Keys.ARROW_RIGHT, "1"), (Keys.END, "2"), (Keys.ARROW_RIGHT, "0"), (Keys.ARROW_LEFT, "2")):
            self.browser.switch_to.active_element.send_keys(key)
            self.assertEqual(self.one(selected).text, f"Facet {tab}")
            self.assertEqual(self.browser.switch_to.active_element, self.one(selected))
            self.assertEqual(self.one("#map").get_attribute("aria-label"), f"Map of facet {tab}")
        self.one("#map").send_keys(Keys.ENTER)
        self.assertRegex(self.one("#found").text, r"^x \d+ to .*: [\d,]+ blocks, [\d,]+ would go, [\d,]+ would stay")

    def test_texts_of_strangers_stay_text(self):
        for name in ("dry-run", "survey", "failed"):
            self.show(name)
            self.one("#search").send_keys("t")
            self.assertLessEqual(set(HOSTILE[:3]), {row[0] for row in self.shown_rows()})
            self.assertEqual((len(self.all("script")), self.all("img, #map b, table b")), (4, []))
        # Even markup would not run.
        self.script("document.body.append(Object.assign(document.createElement('script'), {textContent: 'ran = 1'}))")
        self.assertIsNone(self.script("return window.ran"))
        self.assertIn("Content Security Policy", self.browser.get_log("browser")[0]["message"])

    def test_each_report_has_its_words(self):
        self.show("survey")
        self.assertNotRegex(self.one("body").text, r"(?i)\b(would|went|go|goes)\b")
        self.show("empty")
        self.assertEqual(self.one(".sums").text.split("\n"), ["0", "blocks", "0", "codes", "0", "with a position"])
        failure = self.show("failed")["error"]
        self.assertEqual(self.one("[role=alert]").text, f"The run failed. {failure}")
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        blocks = self.show("dry-run")["all"]["blocks"]
        self.assertIn(f"Blocks: {blocks}, go: ", self.one("noscript").text)
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": False})

    def test_pictures(self):
        looks = set()
        for name, width, colours in (("wide", 1400, "light"), ("dark", 1400, "dark"), ("narrow", 360, "light")):
            self.show("dry-run", width, colours)
            self.wait_for_zoom()
            self.browser.save_screenshot(f"{pictures}/page-{name}.png")
            self.assertLessEqual(self.script("return document.documentElement.scrollWidth"), width)
            looks.add(self.script("return getComputedStyle(document.body).backgroundColor"
                                  " + document.querySelector('#map canvas').toDataURL()"))
        self.assertEqual(len(looks), 3)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
