"""A sheet for technical drawings: projects points of the machine and writes them as SVG."""

import math

# Orthographic view from the front right and above: x runs across the picture, y into it.
AZIMUTH = math.radians(24)
ELEVATION = math.radians(35)
RIGHT = (math.cos(AZIMUTH), math.sin(AZIMUTH), 0)
UP = (-math.sin(AZIMUTH) * math.sin(ELEVATION), math.cos(AZIMUTH) * math.sin(ELEVATION),
      math.cos(ELEVATION))
TO_EYE = (math.sin(AZIMUTH) * math.cos(ELEVATION), -math.cos(AZIMUTH) * math.cos(ELEVATION),
          math.sin(ELEVATION))

INK = "#27313b"
PAPER = "#fafbfc"
STYLE = f"""  <style>
    path, ellipse {{ stroke: {INK}; stroke-width: 1.1; stroke-linejoin: round }}
    .thin {{ stroke-width: .6 }}
    .line {{ fill: none; stroke-width: .7; stroke-linecap: round }}
    .ghost {{ fill: none; stroke-width: 1.1; stroke-dasharray: 5 3 }}
    .letter {{ fill: none; stroke-width: 2.2; stroke-linecap: round }}
    .arrow {{ stroke: #6e0a0a }}
  </style>"""


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def along(point, direction, length):
    return tuple(p + length * d for p, d in zip(point, direction))


def spoke(axis, angle):
    """Unit vector across `axis`; seen by someone facing the part, angles run clockwise from up."""
    sideways = {(1, 0, 0): (0, 1, 0), (0, -1, 0): (1, 0, 0), (0, 0, 1): (1, 0, 0)}[axis]
    upwards = (0, 1, 0) if axis == (0, 0, 1) else (0, 0, 1)
    return tuple(math.sin(angle) * s + math.cos(angle) * u for s, u in zip(sideways, upwards))


class Sheet:
    """One picture. Elements cover those drawn before them: draw far parts first."""

    def __init__(self, width, height, scale, origin):
        self.width, self.height, self.scale, self.origin = width, height, scale, origin
        self.elements = []
        self.gradients = 0

    def project(self, point):
        return (self.origin[0] + self.scale * dot(point, RIGHT),
                self.origin[1] - self.scale * dot(point, UP))

    def group(self, name):
        if self.elements:
            self.elements.append("  </g>")
        self.elements.append(f'  <g id="{name}">')

    def path(self, points, fill="none", style="", closed=True):
        places = " L".join("{:.1f},{:.1f}".format(*self.project(p)) for p in points)
        name = f' class="{style}"' if style else ""
        end = " Z" if closed else ""
        self.elements.append(f'    <path{name} d="M{places}{end}" fill="{fill}"/>')

    def line(self, start, end):
        self.path([start, end], style="line", closed=False)

    def box(self, x, y, z, material, style=""):
        (x0, x1), (y0, y1), (z0, z1) = x, y, z
        self.path([(x0, y0, z0), (x1, y0, z0), (x1, y0, z1), (x0, y0, z1)], material[1], style)
        self.path([(x1, y0, z0), (x1, y1, z0), (x1, y1, z1), (x1, y0, z1)], material[2], style)
        self.plate(x, y, z1, material[0], style)

    def plate(self, x, y, z, fill="none", style=""):
        self.path([(x[0], y[0], z), (x[1], y[0], z), (x[1], y[1], z), (x[0], y[1], z)], fill, style)

    def prism(self, outline, offset, material, style):
        """Extrudes a flat outline by `offset`, which points to the eye."""
        for start, end in zip(outline, outline[1:] + outline[:1]):
            side = [start, end, along(end, offset, 1), along(start, offset, 1)]
            self.path(side, material[1], style)
        self.path([along(p, offset, 1) for p in outline], material[0], style)

    def cylinder(self, far, axis, length, radius, colours, knurls=0):
        """A round part; its end at `far` + `length` faces the eye."""
        near = along(far, axis, length)
        (fx, fy), (nx, ny) = self.project(far), self.project(near)
        size = math.hypot(nx - fx, ny - fy)
        long, short = self.scale * radius, self.scale * radius * dot(axis, TO_EYE)
        sx, sy = -(ny - fy) / size * long, (nx - fx) / size * long
        turn = math.degrees(math.atan2(sy, sx))
        fill = self.gradient((fx - sx, fy - sy), (fx + sx, fy + sy), colours)
        self.elements.append(
            f'    <path d="M{fx - sx:.1f},{fy - sy:.1f} L{nx - sx:.1f},{ny - sy:.1f} '
            f'L{nx + sx:.1f},{ny + sy:.1f} L{fx + sx:.1f},{fy + sy:.1f} '
            f'A{long:.1f},{short:.1f} {turn:.1f} 0 1 {fx - sx:.1f},{fy - sy:.1f} Z" '
            f'fill="{fill}"/>')
        for step in range(knurls):
            angle = 2 * math.pi * step / knurls
            if dot(spoke(axis, angle), TO_EYE) > 0:
                edge = along(far, spoke(axis, angle), radius)
                self.line(edge, along(edge, axis, length))
        self.disc(near, axis, radius, colours[2])

    def disc(self, centre, axis, radius, fill, style=""):
        x, y = self.project(centre)
        turn = math.degrees(math.atan2(dot(axis, RIGHT), dot(axis, UP)))
        name = f' class="{style}"' if style else ""
        self.elements.append(
            f'    <ellipse{name} rx="{self.scale * radius:.1f}" '
            f'ry="{self.scale * radius * dot(axis, TO_EYE):.1f}" fill="{fill}" '
            f'transform="translate({x:.1f} {y:.1f}) rotate({turn:.1f})"/>')

    def gradient(self, start, end, colours):
        self.gradients += 1
        name = f"round{self.gradients}"
        self.elements.append(
            f'    <linearGradient id="{name}" gradientUnits="userSpaceOnUse" '
            f'x1="{start[0]:.1f}" y1="{start[1]:.1f}" x2="{end[0]:.1f}" y2="{end[1]:.1f}">'
            f'<stop offset="0" stop-color="{colours[0]}"/><stop offset=".65" '
            f'stop-color="{colours[1]}"/><stop offset="1" stop-color="{colours[2]}"/>'
            f'</linearGradient>')
        return f"url(#{name})"

    def save(self, file):
        file.write_text("\n".join([
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}" '
            f'viewBox="0 0 {self.width} {self.height}">',
            STYLE,
            f'  <rect width="{self.width}" height="{self.height}" fill="{PAPER}"/>',
            *self.elements, "  </g>", "</svg>", ""]), encoding="ascii")
