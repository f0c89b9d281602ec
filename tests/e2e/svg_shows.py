# SPDX-License-Identifier: MIT
"""Prints what a sweep's or shmoo's SVG shows, one item a line, parsed as XML."""
import sys
import xml.etree.ElementTree as ET

SVG = '{http://www.w3.org/2000/svg}'
root = ET.parse(sys.argv[1]).getroot()
cells = []
for element in root.iter():
    kind = element.get('class', '')
    if kind.startswith('cell '):
        x, y = float(element.get('x')), float(element.get('y'))
        cells.append((x, y, float(element.get('width')), element.findtext(SVG + 'title')))
        print('cell', cells[-1][3])
    elif kind in ('axis', 'name', 'summary'):
        print(kind, element.text)
    elif kind in ('window', 'common') and element.tag == SVG + 'rect':
        x, y = float(element.get('x')), float(element.get('y'))
        right, bottom = x + float(element.get('width')), y + float(element.get('height'))
        inside = [t for cx, cy, w, t in cells if x <= cx and cx + w <= right and y <= cy <= bottom]
        print(kind, inside[0], '..', inside[-1], len(inside))
    elif kind in ('centre', 'safest'):
        cx, cy = float(element.get('cx')), float(element.get('cy'))
        print(kind, *[t for x, y, w, t in cells if x <= cx <= x + w and y <= cy <= y + w])
    elif kind == 'original' and element.tag == SVG + 'rect':
        x, y = float(element.get('x')), float(element.get('y'))
        print('original', *[t for cx, cy, w, t in cells if cx <= x <= cx + w and cy <= y <= cy + w])
