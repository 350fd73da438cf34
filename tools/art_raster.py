"""A small anti-aliased rasteriser for flat vector art.

Only additions, multiplications, divisions and square roots are used on floats, all of which IEEE 754 rounds exactly,
so that the pictures are the same bytes on every machine. Coordinates are pixels, y grows downwards, and whole numbers
lie on pixel edges.
"""

SUBLINES = 16
CURVE_STEPS = 24
KAPPA = 0.5522847498307936  # control-point distance at which a cubic follows a quarter of a unit circle


class Path:
    """One or more closed polygons; curves are flattened as they are added."""

    def __init__(self):
        self.polygons = []

    def move(self, x, y):
        self.polygons.append([(x, y)])
        return self

    def line(self, x, y):
        self.polygons[-1].append((x, y))
        return self

    def curve(self, x1, y1, x2, y2, x3, y3):
        x0, y0 = self.polygons[-1][-1]
        for step in range(1, CURVE_STEPS + 1):
            t = step / CURVE_STEPS
            u = 1 - t
            a, b, c, d = u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t
            self.polygons[-1].append((a * x0 + b * x1 + c * x2 + d * x3, a * y0 + b * y1 + c * y2 + d * y3))
        return self

    def add(self, other):
        self.polygons.extend(other.polygons)
        return self


def polygon(*points):
    path = Path()
    path.polygons.append(list(points))
    return path


def rectangle(left, top, right, bottom):
    return polygon((left, top), (right, top), (right, bottom), (left, bottom))


def round_rectangle(left, top, right, bottom, radius):
    k = radius * (1 - KAPPA)
    path = Path().move(left + radius, top).line(right - radius, top)
    path.curve(right - k, top, right, top + k, right, top + radius).line(right, bottom - radius)
    path.curve(right, bottom - k, right - k, bottom, right - radius, bottom).line(left + radius, bottom)
    path.curve(left + k, bottom, left, bottom - k, left, bottom - radius).line(left, top + radius)
    return path.curve(left, top + k, left + k, top, left + radius, top)


def disc(x, y, radius):
    return round_rectangle(x - radius, y - radius, x + radius, y + radius, radius)


def grown(path, margin):
    """The path and everything within `margin` of its outline, corners rounded."""
    result = Path()
    for points in path.polygons:
        area = sum(x0 * y1 - x1 * y0 for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]))
        result.polygons.append(points if area > 0 else points[::-1])
        for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]):
            result.add(disc(x0, y0, margin))
            dx, dy = x1 - x0, y1 - y0
            length = (dx * dx + dy * dy) ** 0.5
            if length > 0:
                nx, ny = -dy * margin / length, dx * margin / length
                result.add(polygon((x0 - nx, y0 - ny), (x1 - nx, y1 - ny), (x1 + nx, y1 + ny), (x0 + nx, y0 + ny)))
    return result


def add_span(row, start, end, width, weight):
    start, end = max(start, 0.0), min(end, float(width))
    if end <= start:
        return
    first, last = int(start), min(int(end), width - 1)
    if first == last:
        row[first] += (end - start) * weight
        return
    row[first] += (first + 1 - start) * weight
    for x in range(first + 1, last):
        row[x] += weight
    row[last] += (end - last) * weight


def coverage(path, width, height):
    """Rows of the share of each pixel that lies inside (non-zero winding)."""
    edges = []
    for points in path.polygons:
        for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]):
            if y0 < y1:
                edges.append((y0, y1, x0, (x1 - x0) / (y1 - y0), 1))
            elif y1 < y0:
                edges.append((y1, y0, x1, (x0 - x1) / (y0 - y1), -1))
    crossings = [[] for _ in range(height * SUBLINES)]
    for top, bottom, x, slope, direction in edges:
        first = max(int(top * SUBLINES - 1), 0)
        last = min(int(bottom * SUBLINES + 1), len(crossings) - 1)
        for line in range(first, last + 1):
            y = (line + 0.5) / SUBLINES
            if top <= y < bottom:
                crossings[line].append((x + (y - top) * slope, direction))
    rows = [[0.0] * width for _ in range(height)]
    for line, hits in enumerate(crossings):
        hits.sort()
        winding = 0
        for x, direction in hits:
            if winding == 0:
                start = x
            winding += direction
            if winding == 0:
                add_span(rows[line // SUBLINES], start, x, width, 1.0 / SUBLINES)
    return rows


class Canvas:
    """Pixels as premultiplied red, green, blue, alpha between 0 and 1."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.pixels = [[(0.0, 0.0, 0.0, 0.0)] * width for _ in range(height)]

    def fill(self, path, colour, opacity=1.0, inside=False):
        """Paint over what is there; with `inside` only where something is already painted, keeping its outline."""
        red, green, blue = (int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5))
        for row, shares in zip(self.pixels, coverage(path, self.width, self.height)):
            for x, share in enumerate(shares):
                share *= opacity
                if share <= 0:
                    continue
                r, g, b, a = row[x]
                gain = share * a if inside else share
                rest = 1 - share
                row[x] = (r * rest + red * gain, g * rest + green * gain, b * rest + blue * gain, a * rest + gain)
        return self

    def erase(self, path):
        for row, shares in zip(self.pixels, coverage(path, self.width, self.height)):
            for x, share in enumerate(shares):
                row[x] = tuple(value * max(1 - share, 0.0) for value in row[x])
        return self

    def draw(self, other, opacity=1.0):
        for row, above in zip(self.pixels, other.pixels):
            for x, source in enumerate(above):
                rest = 1 - source[3] * opacity
                row[x] = tuple(s * opacity + d * rest for s, d in zip(source, row[x]))
        return self

    def part(self, top, bottom, dx, dy):
        """A canvas of the same size with only the rows from top to bottom, moved by whole pixels."""
        result = Canvas(self.width, self.height)
        for y in range(max(top, -dy), min(bottom, self.height - dy)):
            for x in range(max(0, -dx), min(self.width, self.width - dx)):
                result.pixels[y + dy][x + dx] = self.pixels[y][x]
        return result

    def rgba(self):
        """Rows of straight (not premultiplied) 8-bit red, green, blue, alpha."""
        rows = []
        for row in self.pixels:
            line = []
            for *colour, a in row:
                alpha = min(int(a * 255 + 0.5), 255)
                line.append((*(min(int(c / a * 255 + 0.5), 255) for c in colour), alpha) if alpha else (0, 0, 0, 0))
            rows.append(line)
        return rows
