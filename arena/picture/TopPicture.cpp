#include "arena/picture/Marks.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Sampling.h"
#include "arena/picture/Scene.h"

#include <algorithm>
#include <cmath>

namespace drench::arena {

namespace {

/// Margin around the picture, as a share of its shorter side.
constexpr double margin = 0.03;

// Floors by height, from dark to light, so that the order shows without its hues.
constexpr Colour lowFloor = {50, 112, 152};
constexpr Colour middleFloor = {122, 188, 152};
constexpr Colour highFloor = {252, 240, 176};

/// Stripes on floors that nobody gets to.
constexpr Colour unreachedStripe = {222, 72, 36};

constexpr Colour noFloor = {44, 44, 50};
constexpr Colour noFloorDot = {74, 74, 84};
constexpr Colour contour = {18, 22, 28};
constexpr Colour page = {250, 249, 246};
constexpr Colour pageText = {66, 68, 76};

/// Half the sides of the squares, one within the other, that show a place's floors from the highest
/// down, in cells.
constexpr double squares[] = {0.5, 0.28, 0.14};

/// Width of the line along the edge of the higher of two floors, in cells, for each cube between
/// them.
constexpr double contourWidth = 0.04;

/// Cubes between two floors beyond which the line gets no wider.
constexpr int steepest = 4;

/// From one stripe or dot to the next, in pixels.
constexpr double pixelsPerStripe = 6.0;

/// The most stripes or dots along a cell; in large cells they are wider instead.
constexpr double mostPatterns = 3.0;

/// Pixels of a cell's side from which on lines are drawn along edges; in smaller cells they would
/// cover everything.
constexpr double leastForContours = 4.0;

/// Pixels of a cell's side from which on it is rounded down to whole pixels, so that all cells are
/// alike.
constexpr double leastForWholePixels = 5.0;

struct Floor {
    int row = 0;
    bool reached = false;
};

/// The floors of each place of the grid, the highest first.
struct Floors {
    int columns = 0;
    int depth = 0;
    std::vector<std::vector<Floor>> places;

    /// The lowest and highest of the reached floors; of all floors if none is reached.
    int lowest = 0;
    int highest = 0;

    std::size_t indexOf(int column, int depthIndex) const {
        return static_cast<std::size_t>(column) * static_cast<std::size_t>(depth) +
               static_cast<std::size_t>(depthIndex);
    }
    const std::vector<Floor>& at(int column, int depthIndex) const {
        return places[indexOf(column, depthIndex)];
    }
};

Floors floorsOf(const MapManager& map, std::span<const CellIndex> walkable,
                std::span<const CellIndex> reached) {
    Floors floors{map.columns, map.depth, {}, map.rows, 0};
    floors.places.resize(static_cast<std::size_t>(map.columns) *
                         static_cast<std::size_t>(map.depth));
    const auto add = [&](const CellIndex& feet, bool isReached) {
        const bool inGrid = feet.column >= 0 && feet.column < map.columns && feet.depth >= 0 &&
                            feet.depth < map.depth && feet.row > 0 && feet.row <= map.rows;
        // A body may stand on a cube's edge with its middle beside the cube: that cell has no
        // floor.
        if (!inGrid || map.cubeIsNull(feet.column, feet.row - 1, feet.depth))
            return;
        std::vector<Floor>& place = floors.places[floors.indexOf(feet.column, feet.depth)];
        const auto known = std::find_if(place.begin(), place.end(),
                                        [&](const Floor& floor) { return floor.row == feet.row; });
        if (known == place.end())
            place.push_back({feet.row, isReached});
        else
            known->reached = known->reached || isReached;
    };
    for (const CellIndex& feet : walkable)
        add(feet, false);
    for (const CellIndex& feet : reached)
        add(feet, true);

    for (std::vector<Floor>& place : floors.places) {
        std::sort(place.begin(), place.end(),
                  [](const Floor& a, const Floor& b) { return a.row > b.row; });
        for (const Floor& floor : place) {
            if (!floor.reached && !reached.empty())
                continue;
            floors.lowest = std::min(floors.lowest, floor.row);
            floors.highest = std::max(floors.highest, floor.row);
        }
    }
    return floors;
}

Colour floorColour(const Floors& floors, int row) {
    const int range = floors.highest - floors.lowest;
    const double share =
        range > 0 ? std::clamp(double(row - floors.lowest) / range, 0.0, 1.0) : 0.5;
    return share < 0.5 ? mixed(lowFloor, middleFloor, 2.0 * share)
                       : mixed(middleFloor, highFloor, 2.0 * share - 1.0);
}

/// The colour of a place at a point within it, in cells from its north-west corner. Patterns repeat
/// `perCell` times in a cell.
Colour patternAt(const Floors& floors, std::span<const Floor> place, double x, double z,
                 double perCell) {
    const auto inCell = [](double value) { return value - std::floor(value); };
    if (place.empty()) {
        const double dotX = inCell(x * perCell) - 0.5;
        const double dotZ = inCell(z * perCell) - 0.5;
        return dotX * dotX + dotZ * dotZ < 0.06 ? noFloorDot : noFloor;
    }
    const double fromMiddle = std::max(std::abs(inCell(x) - 0.5), std::abs(inCell(z) - 0.5));
    std::size_t shown = 0;
    while (shown + 1 < std::min(place.size(), std::size(squares)) &&
           fromMiddle < squares[shown + 1])
        ++shown;
    const Floor& floor = place[shown];
    if (!floor.reached && inCell((x + z) * perCell) < 0.45)
        return unreachedStripe;
    return floorColour(floors, floor.row);
}

/// Whether a point is on the line along an edge of its place beyond which the floor is lower.
bool onContour(const Floors& floors, double x, double z, double scale) {
    const int column = static_cast<int>(x);
    const int depth = static_cast<int>(z);
    if (scale < leastForContours || floors.at(column, depth).empty())
        return false;
    const int row = floors.at(column, depth).front().row;
    constexpr int sides[4][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
    const double distances[4] = {x - column, column + 1 - x, z - depth, depth + 1 - z};
    for (std::size_t side = 0; side < 4; ++side) {
        const int i = column + sides[side][0];
        const int k = depth + sides[side][1];
        if (i < 0 || i >= floors.columns || k < 0 || k >= floors.depth || floors.at(i, k).empty())
            continue;
        const int drop = std::min(row - floors.at(i, k).front().row, steepest);
        if (drop > 0 && distances[side] < std::max(contourWidth * drop, 1.0 / scale))
            return true;
    }
    return false;
}

/// A line of the key: a small map of one place, and its meaning.
struct KeyEntry {
    std::vector<Floor> place;
    std::string words;
};

// The key, and the scales along the map's edges, are measured in dots of their text.

/// Side of the small map of one place that begins a line of the key.
constexpr int swatchSide = 11;

/// From a swatch's top to that of the words beside it.
constexpr int aboveKeyText = (swatchSide - glyphHeight) / 2;

/// From one column of the key to the next; the longest words take 112.
constexpr int keyEntryWidth = 126;

/// From one line of the key to the next.
constexpr int keyEntryHeight = 16;

/// Between the map and its key.
constexpr int keyMargin = 8;

/// Room for the numbers of depth indices left of the map; no two numbers of a scale are nearer.
constexpr int scaleWidth = 22;

/// Room for the numbers of columns above the map.
constexpr int scaleHeight = 12;

/// The most heights that the key lists; if there are more, it lists some of them.
constexpr int mostHeights = 8;

std::vector<KeyEntry> keyOf(const Floors& floors) {
    std::vector<KeyEntry> key;
    const int heights = std::clamp(floors.highest - floors.lowest + 1, 0, mostHeights);
    for (int i = 0; i < heights; ++i) {
        const int row = heights == 1
                            ? floors.highest
                            : floors.highest - (floors.highest - floors.lowest) * i / (heights - 1);
        key.push_back({{{row, true}}, "FLOOR AT " + std::to_string(row)});
    }
    const auto somewhere = [&](auto isThere) {
        return std::any_of(floors.places.begin(), floors.places.end(), isThere);
    };
    using Place = std::vector<Floor>;
    if (somewhere([](const Place& place) { return place.size() > 1; }))
        key.push_back({{{floors.highest, true}, {floors.lowest, true}}, "ANOTHER BELOW"});
    if (somewhere([](const Place& place) {
            return std::any_of(place.begin(), place.end(),
                               [](const Floor& floor) { return !floor.reached; });
        }))
        key.push_back({{{floors.highest, false}}, "NEVER REACHED"});
    if (somewhere([](const Place& place) { return place.empty(); }))
        key.push_back({{}, "NO ROOM TO STAND"});
    return key;
}

/// The positions of things on the page, in pixels.
struct Layout {
    ImagePoint map;

    /// Pixels per cell.
    double scale = 1.0;
    bool hasKey = false;
    ImagePoint key;
    int keyColumns = 1;

    /// Pixels per dot of text.
    int dot = 1;
};

Layout layoutOf(const Floors& floors, std::size_t keyEntries, const Image& image) {
    const double shorter = std::min(image.width, image.height);
    const double edge = margin * shorter;
    Layout layout;
    layout.dot = std::max(1, static_cast<int>(shorter / 450.0));

    // The key is at the right, or below, or left out if the picture is too small for it.
    const double entryWidth = keyEntryWidth * layout.dot;
    const double entryHeight = keyEntryHeight * layout.dot;
    const int columnsBelow = std::max(1, static_cast<int>((image.width - 2.0 * edge) / entryWidth));
    const double linesBelow = std::ceil(double(keyEntries) / columnsBelow);
    const double gap = keyMargin * layout.dot;
    const ImagePoint scales = {double(scaleWidth * layout.dot), double(scaleHeight * layout.dot)};
    const double atRight = entryWidth + gap;
    const double below = linesBelow * entryHeight + gap;
    const auto scaleWithout = [&](double width, double height) {
        return std::min((image.width - 2.0 * edge - width) / floors.columns,
                        (image.height - 2.0 * edge - height) / floors.depth);
    };
    const bool fitsAtRight = double(keyEntries) * entryHeight <= image.height - 2.0 * edge;
    const double rightScale = fitsAtRight ? scaleWithout(scales.x + atRight, scales.y) : 0.0;
    const double belowScale =
        entryWidth <= image.width - 2.0 * edge ? scaleWithout(scales.x, scales.y + below) : 0.0;
    layout.scale = scaleWithout(0.0, 0.0);
    layout.hasKey = std::max(rightScale, belowScale) > 0.5 * layout.scale;
    const bool right = layout.hasKey && rightScale >= belowScale;
    if (layout.hasKey)
        layout.scale = std::max(rightScale, belowScale);
    // Whole pixels make all places alike.
    if (layout.scale >= leastForWholePixels)
        layout.scale = std::floor(layout.scale);

    const double mapWidth = layout.scale * floors.columns;
    const double mapHeight = layout.scale * floors.depth;
    const ImagePoint before = layout.hasKey ? scales : ImagePoint{};
    const double usedWidth = before.x + mapWidth + (right ? atRight : 0.0);
    const double usedHeight = before.y + mapHeight + (layout.hasKey && !right ? below : 0.0);
    layout.map = {std::floor(0.5 * (image.width - usedWidth) + before.x),
                  std::floor(0.5 * (image.height - usedHeight) + before.y)};
    layout.keyColumns = right ? 1 : columnsBelow;
    layout.key = right ? ImagePoint{layout.map.x + mapWidth + gap, layout.map.y}
                       : ImagePoint{edge, layout.map.y + mapHeight + gap};
    return layout;
}

void drawKey(Image& image, const Layout& layout, const Floors& floors,
             const std::vector<KeyEntry>& key) {
    const int side = swatchSide * layout.dot;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const int column = static_cast<int>(i) % layout.keyColumns;
        const int line = static_cast<int>(i) / layout.keyColumns;
        const double left = std::round(layout.key.x) + column * keyEntryWidth * layout.dot;
        const double top = std::round(layout.key.y) + line * keyEntryHeight * layout.dot;
        fillRectangle(image, {left - 1, top - 1}, {left + side + 1, top + side + 1}, contour);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x)
                fillRectangle(
                    image, {left + x, top + y}, {left + x + 1, top + y + 1},
                    patternAt(floors, key[i].place, (x + 0.5) / side, (y + 0.5) / side, 2.0));
        }
        drawText(image, {left + side + 5 * layout.dot, top + aboveKeyText * layout.dot},
                 key[i].words, layout.dot, pageText);
    }
}

/// Numbers of columns and depth indices along the map's edges.
void drawScales(Image& image, const Layout& layout, const Floors& floors) {
    int every = 1;
    while (every * layout.scale < scaleWidth * layout.dot)
        every *= 2;
    for (int i = 0; i < floors.columns; i += every) {
        const double x = layout.map.x + (i + 0.5) * layout.scale;
        drawTextAround(image, {x, layout.map.y - 0.5 * scaleHeight * layout.dot}, std::to_string(i),
                       layout.dot, pageText);
    }
    for (int k = 0; k < floors.depth; k += every) {
        const std::string number = std::to_string(k);
        const double right = layout.map.x - 4.0 * layout.dot;
        const double y = layout.map.y + (k + 0.5) * layout.scale;
        drawText(image,
                 {right - textWidth(number) * layout.dot, y - 0.5 * glyphHeight * layout.dot},
                 number, layout.dot, pageText);
    }
}

void drawArrow(Image& image, const Layout& layout, const Mark& mark) {
    const double size = std::max(layout.scale, 9.0);
    const ImagePoint middle = {layout.map.x + mark.feet[0] * layout.scale,
                               layout.map.y + mark.feet[2] * layout.scale};
    const auto along = [&](double ahead, double aside) {
        return ImagePoint{middle.x + (ahead * mark.directionX - aside * mark.directionZ) * size,
                          middle.y + (ahead * mark.directionZ + aside * mark.directionX) * size};
    };
    const bool hasDirection = mark.directionX != 0.0 || mark.directionZ != 0.0;
    if (hasDirection) {
        const double outline = std::max(0.1 * size, 1.0) / size;
        strokeLine(image, middle, along(1.6, 0.0), (0.3 + 2.0 * outline) * size, white);
        fillTriangle(image, along(2.4 + 2.2 * outline, 0.0),
                     along(1.45 - outline, 0.6 + 1.7 * outline),
                     along(1.45 - outline, -0.6 - 1.7 * outline), white);
        strokeLine(image, middle, along(1.6, 0.0), 0.3 * size, signalColour);
        fillTriangle(image, along(2.4, 0.0), along(1.45, 0.6), along(1.45, -0.6), signalColour);
    }
    drawNumber(image, middle, 0.72 * size, mark.number);
}

} // namespace

ImagePoint TopView::above(vec3 point) const {
    return {corner.x + point.x / cubeEdge * scale, corner.y + point.z / cubeEdge * scale};
}

TopView topView(const MapManager& map, std::span<const CellIndex> walkable,
                std::span<const CellIndex> reached, int width, int height) {
    requireCells(map);
    const Floors floors = floorsOf(map, walkable, reached);
    const Layout layout = layoutOf(floors, keyOf(floors).size(), Image(width, height));
    return {layout.map, layout.scale};
}

Image topPicture(const MapManager& map, std::span<const SpawnMark> spawns,
                 std::span<const CellIndex> walkable, std::span<const CellIndex> reached, int width,
                 int height) {
    Image image(width, height, page);
    requireCells(map);
    const Floors floors = floorsOf(map, walkable, reached);
    const std::vector<KeyEntry> key = keyOf(floors);
    const Layout layout = layoutOf(floors, key.size(), image);

    const double perCell = std::min(layout.scale / pixelsPerStripe, mostPatterns);
    drawSamples(image, [&](ImagePoint point, int) {
        const double x = (point.x - layout.map.x) / layout.scale;
        const double z = (point.y - layout.map.y) / layout.scale;
        Colour colour = page;
        if (x >= 0.0 && x < floors.columns && z >= 0.0 && z < floors.depth) {
            const int column = static_cast<int>(x);
            const int depth = static_cast<int>(z);
            colour = onContour(floors, x, z, layout.scale)
                         ? contour
                         : patternAt(floors, floors.at(column, depth), x, z, perCell);
        }
        return Sample{lightOf(colour), colour.red * 65536u + colour.green * 256u + colour.blue};
    });
    if (layout.hasKey) {
        drawScales(image, layout, floors);
        drawKey(image, layout, floors, key);
    }
    for (const Mark& mark : marksOf(spawns, map.cubeSize)) {
        const bool onMap = mark.feet[0] >= 0.0 && mark.feet[0] <= floors.columns &&
                           mark.feet[2] >= 0.0 && mark.feet[2] <= floors.depth;
        if (onMap)
            drawArrow(image, layout, mark);
    }
    return image;
}

} // namespace drench::arena
