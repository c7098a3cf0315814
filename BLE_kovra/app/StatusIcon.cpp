#include "BLE_kovra/app/StatusIcon.h"

namespace kovra {

namespace {

// The measures of a glyph in pixels, with the origin at its bottom left corner.
struct GlyphMeasures {
    int pixels;
    RoundedRectangle pad;
    double padWidth;  // of the pad's line
    Segment divider;
    double dividerWidth;
    Segment slash;
    double slashWidth;
    double gap;  // on each side of the slash
};

// The slash is the thickest line, since it must be noticed beside other icons. The gap separates it from the pad, which
// it would otherwise merge with. The glyph for 24 pixels is that for 22 with a margin of one pixel, so that icons of
// both sizes are equally large beside others.
const GlyphMeasures glyphMeasures[] = {
    {.pixels = 16,
     .pad = {.origin = {1.5, 3.5}, .size = {13, 9}, .cornerRadii = {1.5, 1.5}},
     .padWidth = 1,
     .divider = {.from = {8, 4}, .to = {8, 7}},
     .dividerWidth = 2,
     .slash = {.from = {1.5, 1.5}, .to = {14.5, 14.5}},
     .slashWidth = 2,
     .gap = 1.25},
    {.pixels = 22,
     .pad = {.origin = {3, 5}, .size = {16, 12}, .cornerRadii = {2, 2}},
     .padWidth = 2,
     .divider = {.from = {11, 6}, .to = {11, 11}},
     .dividerWidth = 2,
     .slash = {.from = {3, 3}, .to = {19, 19}},
     .slashWidth = 2.5,
     .gap = 1.5},
    {.pixels = 24,
     .pad = {.origin = {4, 6}, .size = {16, 12}, .cornerRadii = {2, 2}},
     .padWidth = 2,
     .divider = {.from = {12, 7}, .to = {12, 12}},
     .dividerWidth = 2,
     .slash = {.from = {4, 4}, .to = {20, 20}},
     .slashWidth = 2.5,
     .gap = 1.5},
};

Glyph glyph(const GlyphMeasures& measures, bool active) {
    Glyph made{.pixels = measures.pixels, .strokes = {}};
    made.strokes.push_back({measures.pad, measures.padWidth});
    made.strokes.push_back({measures.divider, measures.dividerWidth});
    if (!active) return made;
    // The gap reaches beyond both ends of the slash, to the corners of the glyph.
    const auto side = static_cast<double>(measures.pixels);
    const Segment diagonal{.from = {0, 0}, .to = {side, side}};
    made.strokes.push_back({diagonal, measures.slashWidth + 2 * measures.gap, true});
    made.strokes.push_back({measures.slash, measures.slashWidth});
    return made;
}

}  // namespace

Drawing makeIcon(bool active) {
    Drawing icon{.name = active ? "ble-kovra-muted-symbolic" : "ble-kovra-symbolic", .size = {18, 18}, .strokes = {}};
    icon.strokes.push_back({RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2});
    icon.strokes.push_back({Segment{.from = {9, 4}, .to = {9, 9}}, 1.0});
    if (active) icon.strokes.push_back({Segment{.from = {3, 3}, .to = {15, 15}}, 1.6});
    for (const GlyphMeasures& each : glyphMeasures) icon.glyphs.push_back(glyph(each, active));
    return icon;
}

}  // namespace kovra
