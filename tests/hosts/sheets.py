"""Places several pictures on one sheet, and saves the sheet."""

from PIL import Image, ImageDraw, ImageFont

FONT = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 13)
PAPER, INK, GAP = (255, 255, 255), (40, 40, 40), 12
COLORS = 64
LANGUAGES = {"en_GB": "English", "ru_RU": "Русский", "uk_UA": "Українська", "fr_FR": "Français", "de_DE": "Deutsch",
             "es_ES": "Español"}


def beside(pictures, gap):
    whole = Image.new("RGB", (sum(one.width for one in pictures) + gap * (len(pictures) - 1),
                              max(one.height for one in pictures)), PAPER)
    left = 0
    for one in pictures:
        whole.paste(one, (left, 0))
        left += one.width + gap
    return whole


def sheet(rows):
    """Returns one picture of rows of (title, picture), in aligned columns, with each title above its picture."""
    rows = [list(row) for row in rows]
    cells = [[max(round(FONT.getlength(title)), one.width) for title, one in row] for row in rows]
    widths = [max(row[column] for row in cells if column < len(row)) for column in range(max(map(len, cells)))]
    heights = [max(one.height for _, one in row) + 20 for row in rows]
    whole = Image.new("RGB", (sum(widths) + GAP * (len(widths) + 1), sum(heights) + GAP * (len(heights) + 1)), PAPER)
    draw = ImageDraw.Draw(whole)
    top = GAP
    for row, height in zip(rows, heights):
        left = GAP
        for (title, one), width in zip(row, widths):
            draw.text((left, top), title, INK, FONT)
            whole.paste(one, (left, top + 20))
            left += width + GAP
        top += height + GAP
    return whole


def save(picture, file):
    """Saves the picture with its COLORS most frequent colors, so that the file is small."""
    frequent = sorted(picture.getcolors(1 << 24), reverse=True)[:COLORS]
    palette = Image.new("P", (1, 1))
    palette.putpalette([part for _, color in frequent for part in color])
    picture.quantize(palette=palette, dither=Image.Dither.NONE).save(file, optimize=True)
    print(f"pictures: {file.name}, {file.stat().st_size // 1024} KiB", flush=True)
