#!/usr/bin/env python3
"""Draws the text on stdin as a terminal shows it, as SVG on stdout."""
import html
import sys

COLUMN, ROW, MARGIN = 8.4, 18, 12  # of a character of 14 px, in px

lines = sys.stdin.read().rstrip("\n").split("\n")
width = round(max(map(len, lines)) * COLUMN + 2 * MARGIN)
height = len(lines) * ROW + 2 * MARGIN
print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}">')
print('<rect width="100%" height="100%" rx="6" fill="#1e1e1e"/>')
print('<g font-family="monospace" font-size="14" fill="#e0e0e0" xml:space="preserve">')
for row, line in enumerate(lines):
    print(f'<text x="{MARGIN}" y="{MARGIN + 13 + row * ROW}">{html.escape(line)}</text>')
print("</g>\n</svg>")
