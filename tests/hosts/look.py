"""Analyzes pictures of the screen: finds changes and the rows of a menu, and measures the contrast of the icon."""

from PIL import Image, ImageChops

# Two colors count as different if their values of red, green or blue (0 to 255) differ by more than this.
NOTICEABLE = 8


def changed(before, after):
    """Returns a mask that is white where the two pictures differ."""
    bands = ImageChops.difference(before, after).split()
    strongest = ImageChops.lighter(ImageChops.lighter(bands[0], bands[1]), bands[2])
    return strongest.point(lambda value: 255 if value > NOTICEABLE else 0)


def widest_group(mask, gap):
    """Returns the box of the widest group of columns with white pixels, or None. Gaps of up to `gap` columns do not
    split a group."""
    runs = _runs(_columns(mask), gap)
    if not runs:
        return None
    left, right = max(runs, key=lambda run: run[1] - run[0])
    _, top, _, bottom = mask.crop((left, 0, right, mask.height)).getbbox()
    return left, top, right, bottom


def menu_box(mask, least):
    """Returns the box of an open menu in a mask of changes, or None.

    A menu has rows with at least `least` white pixels. A highlighted icon is narrower.
    """
    rows = [y for y in range(mask.height) if _count(mask, y) >= least]
    if not rows:
        return None
    top, bottom = rows[0], rows[-1] + 1
    left, _, right, _ = mask.crop((0, (top + bottom) // 2, mask.width, bottom)).getbbox()
    return left, top, right, bottom


def without_shadow(picture, box):
    """Returns the part of the box that contains its most frequent color, which is that of the menu."""
    inside = picture.crop(box)
    paper = Image.new("RGB", inside.size, max(inside.getcolors(1 << 24))[1])
    same = ImageChops.difference(paper, inside).convert("L").point(lambda value: 0 if value else 255)
    left, top, right, bottom = same.getbbox()
    return box[0] + left, box[1] + top, box[0] + right, box[1] + bottom


def text_rows(menu, scale):
    """Returns (top, bottom) of each row of text in a menu's picture, without separators and borders."""
    edge = round(3 * scale)
    inside = menu.crop((edge, edge, menu.width - edge, menu.height - edge))
    paper = Image.new("RGB", inside.size, max(inside.getcolors(1 << 24))[1])
    ink = ImageChops.difference(paper, inside).convert("L").point(lambda value: 255 if value > 60 else 0)
    runs = _runs([bool(_count(ink, y)) for y in range(ink.height)], gap=round(2 * scale))
    return [(top + edge, bottom + edge) for top, bottom in runs if bottom - top > 4 * scale]


def is_slash(mask):
    """Returns whether the white pixels are one straight line from the bottom left to the top right."""
    box = mask.getbbox()
    line = mask.crop(box)
    width, height = line.size
    if not 0.8 < width / height < 1.25:
        return False
    thick = 0.35 * width
    points = [(x, y) for y in range(height) for x in range(width) if line.getpixel((x, y))]
    return all(abs(x + y - (width - 1)) < thick for x, y in points) and all(_columns(line))


def drawn(picture, box, beside=None):
    """Yields (color of the panel, color of the pixel) for each pixel in the box that differs from the panel.

    The color of the panel is that of the pixel in the same row at the column `beside`, by default the middle one.
    """
    left, top, right, bottom = box
    for y in range(top, bottom):
        paper = picture.getpixel((picture.width // 2 if beside is None else beside, y))
        for color in (picture.getpixel((x, y)) for x in range(left, right)):
            if max(abs(one - other) for one, other in zip(paper, color)) > NOTICEABLE:
                yield paper, color


def contrast(picture, box, beside=None):
    """Returns the contrast between the icon in the box and the panel, as a ratio of luminances (1 to 21).

    Most pixels of the thin strokes are blended with the panel. So only the quarter with the highest contrast counts.
    The ratio is 1 if the icon cannot be seen at all.
    """
    ratios = sorted(_ratio(*pair) for pair in drawn(picture, box, beside))
    strongest = ratios[-max(1, len(ratios) // 4):]
    return sum(strongest) / len(strongest) if strongest else 1.0


def has_outline(picture, box, beside=None):
    """Returns whether the icon has pixels that are darker than the panel and others that are lighter."""
    return len({luminance(color) > luminance(paper) for paper, color in drawn(picture, box, beside)}) > 1


def steepest(picture, box):
    """Returns the largest difference between two pixels side by side, as a share of the largest in the box (0 to 1).

    It is 1 for a sharp edge. Enlarging with smooth transitions makes it smaller.
    """
    gray = picture.crop(box).convert("L")
    values = list(gray.getdata())
    darkest, lightest = gray.getextrema()
    steps = [abs(one - other) for place, (one, other) in enumerate(zip(values, values[1:]), 1) if place % gray.width]
    return max(steps) / max(1, lightest - darkest)


def luminance(color):
    """Returns the relative luminance of a color in sRGB (0 to 1)."""
    linear = [value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4
              for value in (band / 255 for band in color)]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def _ratio(one, other):
    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)


def _columns(mask):
    turned = mask.transpose(Image.Transpose.ROTATE_90)
    # After this rotation the last column is the first row.
    return [bool(_count(turned, y)) for y in reversed(range(turned.height))]


def _count(mask, y):
    return mask.width - mask.crop((0, y, mask.width, y + 1)).histogram()[0]


def _runs(filled, gap):
    """Returns (start, end) of each run of true values. Runs that are at most `gap` apart count as one."""
    runs = []
    for position, value in enumerate(filled):
        if not value:
            continue
        if runs and position - runs[-1][1] <= gap:
            runs[-1][1] = position + 1
        else:
            runs.append([position, position + 1])
    return [tuple(run) for run in runs]
