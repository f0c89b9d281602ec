# SPDX-License-Identifier: MIT
"""Prints what an SVG of padkit-tune shows, one item a line, parsed as XML; then a line
'problem: ...' for each text outside the canvas, each legend entry for a mark not drawn, each mark
drawn that the legend does not name, and tick labels that differ between the two sides of an axis."""
import sys
import xml.etree.ElementTree as ET

SVG = '{http://www.w3.org/2000/svg}'
ADVANCE = 8  # what the layout gives a character of its 12 px monospace text (0.6 em is 7.2 px)
# The legend's names of the marks, and the class each is drawn with.
MARKS = {'pass': 'cell pass', 'fail': 'cell fail', 'time-out': 'cell timeout', 'hang': 'cell hang',
         'not measured': 'unmeasured', 'widest window': 'window', 'edge not found': 'edge',
         'centre': 'centre', 'original': 'original', 'common window': 'common',
         'common centre': 'common-centre', 'value to ship': 'ship', 'safest point': 'safest',
         "safest point's margin": 'margin'}

root = ET.parse(sys.argv[1]).getroot()
width, height = float(root.get('width')), float(root.get('height'))
cells, drawn, legend, problems, ticks = [], set(), [], [], {}


def under(x, y):
    """The title of the cell at (x, y), if any."""
    return [t for cx, cy, w, t in cells if cx <= x <= cx + w and cy <= y <= cy + w]


def flush_ticks():
    """Prints the tick labels of a block, side by side, and checks that opposite sides agree."""
    for side, labels in ticks.items():
        print('ticks', side + ':', ' '.join(labels))
    for one, other in (('top', 'bottom'), ('left', 'right')):
        if ticks.get(one) != ticks.get(other):
            problems.append('ticks differ: ' + one + ' ' + other)
    ticks.clear()


for element in root.iter():
    kind = element.get('class', '')
    if element.tag == SVG + 'text' and not kind.startswith('symbol'):
        text, x = element.text or '', float(element.get('x'))
        anchor = element.get('text-anchor', 'start')
        left = x - {'start': 0, 'middle': 0.5, 'end': 1}[anchor] * len(text) * ADVANCE
        if left < 0 or left + len(text) * ADVANCE > width or not 0 < float(element.get('y')) <= height:
            problems.append('text outside the canvas: ' + text)
    if kind.startswith('key '):
        continue
    if kind.startswith('cell ') or kind in MARKS.values():
        drawn.add(kind)
    if kind.startswith('cell '):
        x, y = float(element.get('x')), float(element.get('y'))
        cells.append((x, y, float(element.get('width')), element.findtext(SVG + 'title')))
        print('cell', cells[-1][3])
    elif kind.startswith('axis '):
        if kind == 'axis top' and 'bottom' in ticks:
            flush_ticks()
        ticks.setdefault(kind[5:], []).append(element.text)
    elif kind in ('title', 'partial', 'block', 'axis-title', 'name', 'summary'):
        print(kind, element.text)
    elif kind == 'legend':
        legend.append(element.text)
        print('legend', element.text)
    elif kind in ('window', 'common', 'margin'):
        x, y = float(element.get('x')), float(element.get('y'))
        right, bottom = x + float(element.get('width')), y + float(element.get('height'))
        inside = [t for cx, cy, w, t in cells if x <= cx and cx + w <= right and y <= cy and cy + w <= bottom]
        print(kind, inside[0], '..', inside[-1], len(inside))
    elif kind in ('centre', 'safest', 'original'):
        print(kind, *under(float(element.get('cx')), float(element.get('cy'))))
    elif kind in ('edge', 'ship', 'common-centre'):
        # The tip is the path's first point: an edge beside its row's last cell, a centre above its column.
        tip_x, tip_y = map(float, element.get('d')[1:].split('L')[0].split())
        if kind == 'edge':
            row = [(abs(cx + w / 2 - tip_x), cx, t) for cx, cy, w, t in cells if cy <= tip_y <= cy + w]
            _, cx, title = min(row)
            print(kind, 'left of' if tip_x < cx else 'right of', title)
        else:
            print(kind, [t for cx, cy, w, t in cells if cx <= tip_x <= cx + w][0])
flush_ticks()
for name in legend:
    if MARKS.get(name) not in drawn:
        problems.append('legend names a mark not drawn: ' + name)
for kind in sorted(drawn - {MARKS.get(name) for name in legend}):
    problems.append('drawn without a legend entry: ' + kind)
for problem in problems:
    print('problem:', problem)
