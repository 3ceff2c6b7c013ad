#!/usr/bin/env python3
"""Tests the rules of page.py."""
import unittest

import page


class Commands(unittest.TestCase):
    def texts(self, text):
        return [(found.text, found.output, found.note) for found in page.commands(text)]

    def test_output_of_a_session_belongs_to_the_command_above_it(self):
        self.assertEqual(self.texts("```console\n$ one\na\nb\n\n$ two\n```"),
                         [("one", ["a", "b"], None), ("two", [], None)])

    def test_all_lines_of_a_script_are_commands_whose_output_is_not_shown(self):
        self.assertEqual(self.texts("```sh\none\ntwo\n```"),
                         [("one", None, None), ("two", None, None)])

    def test_a_here_document_belongs_to_its_command(self):
        self.assertEqual(self.texts("```console\n$ cat <<END\n> one\n> END\none\n```"),
                         [("cat <<END\none\nEND", ["one"], None)])

    def test_blocks_of_other_languages_hold_no_commands(self):
        self.assertEqual(self.texts("```cpp\n$ one\n```"), [])

    def test_a_note_belongs_to_the_block_directly_below_it(self):
        text = "<!-- not run: needs a port -->\n```sh\none\n```\n```sh\ntwo\n```"
        self.assertEqual(self.texts(text), [("one", None, "not run"), ("two", None, None)])

    def test_a_note_needs_a_reason(self):
        with self.assertRaises(page.PageError):
            page.commands("<!-- not run: -->\n```sh\none\n```")

    def test_commands_outside_of_a_block_are_an_error(self):
        with self.assertRaises(page.PageError):
            page.commands("text\n\n    kmr areas\n")

    def test_a_block_without_an_end_is_an_error(self):
        with self.assertRaises(page.PageError):
            page.commands("```sh\none\n")


class Fits(unittest.TestCase):
    def test_another_value_does_not_fit(self):
        self.assertFalse(page.fits(["D0 1"], ["D0 2"]))

    def test_a_missing_or_further_line_does_not_fit(self):
        self.assertFalse(page.fits(["a", "b"], ["a"]))
        self.assertFalse(page.fits(["a"], ["a", "b"]))

    def test_times_and_durations_may_differ(self):
        self.assertTrue(page.fits(["2026-11-21T09:46:48.280Z D0 1, 0.025 ms"],
                                  ["2031-01-02T03:04:05.678Z D0 1, 13.331 ms"]))

    def test_dots_stand_for_any_number_of_lines(self):
        self.assertTrue(page.fits(["a", "...", "d"], ["a", "b", "c", "d"]))
        self.assertTrue(page.fits(["a", "...", "d"], ["a", "d"]))
        self.assertFalse(page.fits(["a", "...", "d"], ["a", "b", "c"]))


class References(unittest.TestCase):
    def test_paths_and_links_are_found(self):
        paths, links = page.references("`script/test`, [x](docs/y.md#part), [z](https://z)")
        self.assertEqual(paths, {"script/test", "docs/y.md"})
        self.assertEqual(links, {"docs/y.md"})


if __name__ == "__main__":
    unittest.main()
