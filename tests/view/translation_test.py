#!/usr/bin/env python3
"""Every text of the window has a German translation, and every counted one an English one."""
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

LUPDATE, ROOT = sys.argv[1], pathlib.Path(sys.argv[2])


def renewed(language, *options):
    """The translations after they were compared with the sources."""
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "copy.ts"
        copy.write_bytes((ROOT / f"view/translations/kmr-view_{language}.ts").read_bytes())
        subprocess.run([LUPDATE, "-silent", "-I", str(ROOT), "-locations", "none", *options,
                        str(ROOT / "view"), "-ts", str(copy)], check=True, capture_output=True)
        return xml.etree.ElementTree.parse(copy).getroot()


class Translations(unittest.TestCase):
    def assert_complete(self, texts):
        messages = list(texts.iter("message"))
        self.assertTrue(messages)
        for message in messages:
            translation = message.find("translation")
            source = message.findtext("source")
            self.assertIsNone(translation.get("type"), source)  # unfinished or vanished
            self.assertTrue("".join(translation.itertext()).strip(), source)
            for place in ("%1", "%2", "%3", "%4"):
                for form in translation.findall("numerusform") or [translation]:
                    self.assertEqual(place in source, place in form.text, source)

    def test_german(self):
        self.assert_complete(renewed("de"))

    def test_english_plurals(self):
        self.assert_complete(renewed("en", "-pluralonly"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
