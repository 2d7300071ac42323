#include "facade.h"

#include <utility>

#include "window.h"

namespace Samples {
namespace {

constexpr double kPilasterHalf = 22;
constexpr double kArchHalf = 98;
constexpr double kCorniceHeight = 76;
constexpr Rgb kStone = {0.90, 0.87, 0.81};
constexpr Rgb kSandstone = {0.80, 0.73, 0.62};

struct House {
    Rgb wall;
    Rgb shutter;
    Rgb awning;
};

const House kHouses[] = {
    {{0.67, 0.76, 0.70}, {0.45, 0.22, 0.17}, {0.72, 0.28, 0.22}},
    {{0.57, 0.68, 0.78}, {0.88, 0.86, 0.80}, {0.76, 0.22, 0.20}},
    {{0.91, 0.71, 0.40}, {0.15, 0.37, 0.31}, {0.16, 0.40, 0.33}},
    {{0.85, 0.53, 0.44}, {0.24, 0.33, 0.42}, {0.20, 0.34, 0.55}},
    {{0.93, 0.86, 0.66}, {0.34, 0.42, 0.30}, {0.80, 0.58, 0.22}},
};

const House &HouseOf(int index)
{
    return kHouses[((index % 5) + 5) % 5];
}

/// Returns a brightness factor that gives plaster or stone its grain.
double Grain(const Footprint &cell, uint32_t seed)
{
    return 1 + 0.06 * Cloud(cell.at.x / 70, cell.at.y / 70, 3, seed)
        + 0.025 * Noise(cell.at.x / 4, cell.at.y / 4, seed + 9);
}

/// Returns the color of goods on shelves under a lamp; x is measured from the axis of the arch, y down from its spring
/// line.
Rgb ShopWindow(double x, double y, int shop)
{
    const Rgb lamp = Mix({1.0, 0.80, 0.50}, {0.90, 0.89, 0.82}, Hash(shop, 3, 77));
    const double glow = 1 - Ramp(std::hypot((x + 10) / 120, (y - 40) / 190), 0.0, 1.15);
    const double shelf = std::floor(y / 42);
    const double width = 15 + 12 * Hash(shop, static_cast<int64_t>(shelf), 78);
    const double item = std::floor(x / width);
    const double height = 14 + 22 * Hash(static_cast<int64_t>(item), static_cast<int64_t>(shelf) + 50 * shop, 79);
    const double above = 42 - (y - 42 * shelf); // height above the shelf
    const double tone = 0.35 + 0.5 * Hash(static_cast<int64_t>(item), static_cast<int64_t>(shelf) + 50 * shop, 80);
    const double goods = Ramp(above, height + 2, height - 2) * Ramp(above, 4, 6)
        * Ramp(std::abs(x - (item + 0.5) * width), width / 2, width / 2 - 4);
    Rgb color =
        Mix({0.20, 0.17, 0.15}, Mix({0.62, 0.36, 0.26}, {0.46, 0.56, 0.50}, tone) * (0.7 + tone), y > 0 ? goods : 0);
    color = color * (y > 0 && above < 5 ? 0.6 : 1.0);
    return color * (0.42 + 0.5 * glow) + lamp * (0.38 * glow);
}

} // namespace

FacadePlan LandscapePlan()
{
    return {1200,
            330,
            {45, 705, 1695, 2355},
            118,
            216,
            {{WindowKind::Attic, 352, 462, 500}, {WindowKind::Tall, 580, 806, 858}},
            892,
            1250,
            1294,
            1114,
            1600,
            2400,
            {-4, -1.5, 1.5, 4},
            {9, 14}};
}

FacadePlan PortraitPlan()
{
    return {800,
            300,
            {50, 350, 1250, 1550},
            150,
            250,
            {{WindowKind::Attic, 386, 492, 532},
             {WindowKind::Plain, 612, 806, 856},
             {WindowKind::Plain, 936, 1130, 1180},
             {WindowKind::Tall, 1268, 1494, 1546}},
            1580,
            1938,
            1984,
            1800,
            2400,
            1600,
            {-1.5, 1.5},
            {7, 11}};
}

Facade::Facade(FacadePlan plan) : m_plan(std::move(plan)) { }

Facade::Bay Facade::BayAt(double x) const
{
    const double index = std::floor((x - m_plan.centerX) / m_plan.bay + 0.5);
    int house = 0;
    for (double pilaster : m_plan.pilasters)
        house += x > pilaster;
    return {static_cast<int>(index), house, x - m_plan.centerX - index * m_plan.bay};
}

void Facade::PaintSky(Brush &brush) const
{
    const double x = brush.cell.at.x;
    const double y = brush.cell.at.y;
    brush.color = Mix({0.33, 0.53, 0.80}, {0.74, 0.85, 0.93}, Ramp(y, -160, m_plan.ridge + 60));
    const double wisp = Cloud(x / 420 + 0.3 * Noise(x / 200, y / 90, 5), y / 110, 5, 11);
    brush.Fill(0.9 * Ramp(wisp, -0.02, 0.42), {0.97, 0.97, 0.97});
}

void Facade::PaintRoof(Brush &brush) const
{
    const double x = brush.cell.at.x;
    const double y = brush.cell.at.y;
    for (int i = -2; i < 8; ++i) {
        const double left = 190 + 430 * i + 160 * Hash(i, 0, 3);
        const double top = m_plan.ridge - 42 - 20 * Hash(i, 1, 3);
        brush.Fill(brush.Box(left, top, left + 62, m_plan.ridge + 10), {0.62, 0.37, 0.29});
        brush.Shade(brush.Box(left, top, left + 62, m_plan.ridge) * Lines(y, 9, 1.6, brush.cell.height), 0.82);
        brush.Shade(brush.Box(left + 44, top, left + 62, m_plan.ridge), 0.72);
        brush.Fill(brush.Box(left - 5, top - 9, left + 67, top), {0.80, 0.76, 0.70});
    }
    const double onRoof = Span(y, m_plan.ridge, m_plan.eaves, brush.cell.height);
    if (onRoof <= 0)
        return;
    const double column = std::floor(x / 15);
    const double row = std::floor((y - m_plan.ridge) / 14);
    const double tone = 0.92 + 0.16 * Hash(static_cast<int64_t>(column), static_cast<int64_t>(row), 21);
    const double roll = 0.86 + 0.16 * std::cos((x / 15 - column - 0.35) * 6.2832);
    const double lap = 1 - 0.34 * Lines(y - m_plan.ridge, 14, 3, brush.cell.height);
    brush.Fill(onRoof, Rgb{0.74, 0.44, 0.33} * (tone * roll * lap * (1 + 0.14 * Cloud(x / 130, y / 60, 3, 22))));
    brush.Shade(brush.Box(-1e6, m_plan.ridge, 1e6, m_plan.ridge + 7), 1.12);
}

void Facade::PaintCornice(Brush &brush) const
{
    const double y = brush.cell.at.y - m_plan.eaves;
    const auto band = [&](double lo, double hi) { return Span(y, lo, hi, brush.cell.height); };
    brush.Fill(band(0, 9), {0.27, 0.31, 0.30});
    brush.Shade(band(0, 3), 1.5);
    brush.Fill(band(9, kCorniceHeight), kStone * (1 + 0.02 * Cloud(brush.cell.at.x / 80, y / 20, 3, 31)));
    brush.Fill(band(9, 34), {0.93, 0.91, 0.86});
    brush.Shade(band(34, 40), kShadow);
    brush.Shade(band(40, 58) * (1 - Lines(brush.cell.at.x, 24, 13, brush.cell.width)), {0.62, 0.64, 0.70});
    brush.Shade(band(58, 61), 0.80);
    brush.Shade(band(70, kCorniceHeight), 1.05);
}

void Facade::PaintWall(Brush &brush, const Bay &bay) const
{
    const double y = brush.cell.at.y;
    const double top = m_plan.eaves + kCorniceHeight;
    brush.color = HouseOf(bay.house).wall * Grain(brush.cell, 41);
    brush.Shade(Ramp(y, top, m_plan.arcade) * 0.35, {0.92, 0.88, 0.85});
    brush.Shade(1 - Ramp(y, top + 22, top + 44), kShadow);
}

void Facade::PaintStory(Brush &brush, const Bay &bay, const Story &story) const
{
    const double y = brush.cell.at.y;
    const bool tall = story.kind == WindowKind::Tall;
    if (y > story.top - 90 && y < story.band) {
        const uint32_t seed = static_cast<uint32_t>(1000 + bay.index * 17 + static_cast<int>(story.top));
        PaintWindow(brush,
                    {bay.x, story.top, story.bottom,
                     tall                                  ? 54.0
                         : story.kind == WindowKind::Plain ? 50.0
                                                           : 44.0,
                     tall, story.kind != WindowKind::Attic, HouseOf(bay.house).shutter, seed});
    }
    brush.Shade(Span(y, story.band + 14, story.band + 24, brush.cell.height), kShadow);
    brush.Fill(Span(y, story.band, story.band + 14, brush.cell.height), kStone);
    brush.Shade(Span(y, story.band + 9, story.band + 14, brush.cell.height), 0.84);
}

void Facade::PaintArch(Brush &brush, const Bay &bay) const
{
    const double spring = m_plan.arcade + 134;
    const double y = brush.cell.at.y;
    const double size = brush.cell.height;
    const auto arch = [&](double half) {
        const double round =
            Clamp01(0.5 + (half - std::hypot(bay.x, y - spring)) / size) * Span(y, spring - 400, spring, size);
        return Clamp01(round + Span(bay.x, -half, half, size) * Span(y, spring, m_plan.ground, size));
    };
    brush.Fill(arch(kArchHalf + 20), kStone * Grain(brush.cell, 57));
    brush.Shade(arch(kArchHalf + 20) - arch(kArchHalf + 16), 0.80);
    const double inside = arch(kArchHalf);
    if (inside <= 0)
        return;
    brush.Fill(inside, ShopWindow(bay.x, y - spring, bay.index));
    const Rgb frame = {0.82, 0.80, 0.74};
    const double bars = std::max(Lines(bay.x, 61, 7, size) * Span(y, spring - 3, m_plan.ground, size),
                                 Span(y, spring - 6, spring + 6, size));
    const double angle = std::atan2(spring - y, bay.x);
    const double fan =
        y < spring ? Clamp01(0.5 + (3 - std::abs(std::sin(4 * angle)) * std::hypot(bay.x, y - spring) / 4)) : 0;
    brush.Fill(inside * std::max({bars, fan, arch(kArchHalf) - arch(kArchHalf - 9)}), frame);
    brush.Fill(inside * Span(y, m_plan.ground - 74, m_plan.ground, size) * (1 - Lines(bay.x, 61, 7, size)),
               {0.22, 0.30, 0.30});
    const double open = Span(bay.x - 13, -kArchHalf, kArchHalf, size) * Ramp(y, spring + 26, spring - 30);
    brush.Shade(inside * (1 - Span(bay.x, -kArchHalf + 15, 400, size)), kShadow);
    brush.Shade(inside * (1 - open) * (y < spring ? 0.5 : 0), kShadow);
}

void Facade::PaintAwning(Brush &brush, const Bay &bay) const
{
    if (bay.index % 2 != 0)
        return;
    const double top = m_plan.arcade + 84;
    const double bottom = top + 92;
    const double y = brush.cell.at.y;
    const double t = Clamp01((y - top) / (bottom - top));
    const double half = 104 + 14 * t;
    const double scallop = bottom + 14 * std::sqrt(std::abs(std::sin(bay.x / 26 * 3.14159265)));
    const double stripes = 0.5 + 0.5 * SquareWave(bay.x / half * 4.6, brush.cell.width / 26);
    brush.Shade(
        brush.Box(brush.cell.at.x - bay.x - half + 16, top + 20, brush.cell.at.x - bay.x + half + 18, bottom + 60)
            * 0.9,
        kShadow);
    const double cloth = Span(bay.x, -half, half, brush.cell.width) * Span(y, top, scallop, brush.cell.height);
    const Rgb color = Mix(HouseOf(bay.house).awning, {0.95, 0.93, 0.88}, stripes);
    brush.Fill(cloth, color * (y > bottom ? 0.84 : 1.02 - 0.10 * t + 0.04 * Noise(bay.x / 30, y / 20, 93)));
}

void Facade::PaintArcade(Brush &brush, const Bay &bay) const
{
    const double y = brush.cell.at.y;
    const double row = std::floor((y - m_plan.arcade) / 44);
    const double shift = std::fmod(std::abs(row), 2) * 46;
    const double column = std::floor((brush.cell.at.x + shift) / 92);
    const double tone = 0.95 + 0.08 * Hash(static_cast<int64_t>(column), static_cast<int64_t>(row), 51);
    const double joint = std::max(Lines(y - m_plan.arcade, 44, 4, brush.cell.height),
                                  Lines(brush.cell.at.x + shift, 92, 3.4, brush.cell.width));
    Brush stone(brush.cell);
    stone.color = kSandstone * (tone * Grain(brush.cell, 52));
    stone.Shade(joint, {0.66, 0.66, 0.70});
    stone.Shade(0.3 * Ramp(y, m_plan.arcade + 180, m_plan.ground), {0.80, 0.78, 0.76});
    stone.Fill(Span(y, m_plan.ground - 46, m_plan.ground, brush.cell.height),
               kSandstone * (0.86 * Grain(brush.cell, 53)));
    const double share = Span(y, m_plan.arcade, m_plan.ground, brush.cell.height);
    PaintArch(stone, bay);
    PaintAwning(stone, bay);
    brush.Fill(share, stone.color);
    brush.Shade(Span(y, m_plan.arcade, m_plan.arcade + 12, brush.cell.height), kShadow);
    brush.Fill(Span(y, m_plan.arcade - 20, m_plan.arcade, brush.cell.height), {0.94, 0.91, 0.85});
    brush.Shade(Span(y, m_plan.arcade - 7, m_plan.arcade, brush.cell.height), 0.88);
}

void Facade::PaintPilasters(Brush &brush) const
{
    const double top = m_plan.eaves + kCorniceHeight;
    for (double axis : m_plan.pilasters) {
        if (std::abs(brush.cell.at.x - axis) > 60)
            continue;
        const double left = axis - kPilasterHalf;
        const double right = axis + kPilasterHalf;
        brush.Shade(brush.Box(right, top, right + 15, m_plan.ground), kShadow);
        brush.Fill(brush.Box(left, top, right, m_plan.ground),
                   kStone * (1 + 0.02 * Cloud(brush.cell.at.x / 30, brush.cell.at.y / 90, 2, 61)));
        brush.Shade(brush.Box(left, top, left + 4, m_plan.ground), 1.06);
    }
}

void Facade::PaintSteps(Brush &brush) const
{
    const double y = brush.cell.at.y;
    const auto band = [&](double lo, double hi) {
        return Span(y, m_plan.ground + lo, m_plan.ground + hi, brush.cell.height);
    };
    const double end = m_plan.square - m_plan.ground;
    brush.Fill(band(0, end), Rgb{0.84, 0.81, 0.75} * Grain(brush.cell, 71));
    brush.Shade(band(9, 21), {0.70, 0.70, 0.73});
    brush.Shade(band(31, end), {0.66, 0.66, 0.70});
    brush.Shade(band(0, 4), 0.82);
}

void Facade::PaintBush(Brush &brush) const
{
    const double x = brush.cell.at.x;
    const double y = brush.cell.at.y;
    const double index = std::floor((x - m_plan.centerX) / m_plan.bay);
    const double axis = m_plan.centerX + (index + 0.5) * m_plan.bay;
    for (double pilaster : m_plan.pilasters)
        if (std::abs(pilaster - axis) < 60)
            return;
    const double foot = m_plan.ground + 24;
    brush.Shade(brush.Ellipse(axis + 34, foot - 2, 62, 9) * 0.9, kShadow);
    const double half = 24 + (foot - y) / 62 * 8;
    const double pot =
        Span(x, axis - half, axis + half, brush.cell.width) * Span(y, foot - 62, foot, brush.cell.height);
    brush.Fill(pot, Rgb{0.72, 0.42, 0.30} * (1.06 - 0.45 * Ramp(x, axis - 16, axis + 36)));
    brush.Fill(brush.Box(axis - 36, foot - 70, axis + 36, foot - 58),
               Rgb{0.78, 0.47, 0.34} * (1.06 - 0.4 * Ramp(x, axis - 16, axis + 40)));
    const double cy = foot - 116;
    const double edge = 1 + 0.05 * Noise(x / 5, y / 5, 81);
    const double light = 0.62 - 0.5 * ((x - axis) * 0.6 + (y - cy) * 0.8) / 58 + 0.35 * Cloud(x / 7, y / 7, 3, 82);
    brush.Fill(brush.Ellipse(axis, cy, 56 * edge, 56 * edge),
               Mix({0.08, 0.17, 0.09}, {0.47, 0.62, 0.27}, Clamp01(light)));
}

Rgb Facade::Building(const Footprint &cell) const
{
    Brush brush(cell);
    PaintSky(brush);
    PaintRoof(brush);
    const double y = cell.at.y;
    if (y > m_plan.eaves - 2) {
        const Bay bay = BayAt(cell.at.x);
        Brush wall(cell);
        PaintWall(wall, bay);
        for (const Story &story : m_plan.stories)
            PaintStory(wall, bay, story);
        if (y > m_plan.arcade - 30)
            PaintArcade(wall, bay);
        PaintPilasters(wall);
        PaintCornice(wall);
        brush.Fill(Span(y, m_plan.eaves, 1e6, cell.height), wall.color);
    }
    if (y > m_plan.arcade) {
        PaintSteps(brush);
        PaintBush(brush);
    }
    return brush.color;
}

/// Returns the y coordinate of the near edge of a row of tiles.
double Facade::RowEdge(double row) const
{
    return m_plan.horizon + 3880 / row;
}

Rgb Facade::Floor(const Footprint &cell) const
{
    const double below = cell.at.y - m_plan.horizon;
    const double column = (cell.at.x - m_plan.centerX) / below * 2.13;
    const double row = 3880 / below;
    const double columnSize = cell.width / below * 2.13 + std::abs(column) * cell.height / below;
    const double rowSize = row * cell.height / below;
    const double checker = 0.5 - 0.5 * SquareWave(column + 0.5, columnSize) * SquareWave(row, rowSize);
    Brush brush(cell);
    const double tone =
        0.96 + 0.08 * Hash(static_cast<int64_t>(std::floor(column + 0.5)), static_cast<int64_t>(std::floor(row)), 101);
    brush.color = Mix({0.86, 0.80, 0.71}, {0.74, 0.62, 0.54}, checker) * tone;
    brush.Shade(std::max(Lines(column + 0.5, 1, 0.03, columnSize), Lines(row, 1, 0.045, rowSize)), 0.78);
    const Rgb granite = {0.33, 0.33, 0.36};
    for (double middle : m_plan.lengthStrips)
        brush.Fill(Span(column, middle - 0.25, middle + 0.25, columnSize), granite);
    for (int first : m_plan.crossStrips) {
        brush.Fill(Span(row, first - 0.2, first + 1.2, rowSize), {0.88, 0.84, 0.78});
        brush.Fill(Span(row, first, first + 1, rowSize), granite);
    }
    brush.Shade(1, 1 + 0.10 * Cloud(column * 1.7, row * 1.7, 4, 103));
    return brush.color;
}

Rgb Facade::At(const Footprint &cell) const
{
    const double square = Span(cell.at.y, m_plan.square, 1e6, cell.height);
    Rgb color = square < 1 ? Building(cell) : Rgb{};
    if (square > 0) {
        Rgb floor = Floor(cell);
        const double ripple = 6 * Noise(cell.at.x / 40, cell.at.y / 5, 107);
        const Footprint mirrored = {{cell.at.x + ripple, 2 * m_plan.square - cell.at.y - 30}, 14, 30};
        const double gloss = 0.30 * Ramp(cell.at.y, m_plan.square + 210, m_plan.square - 20);
        floor = Mix(floor, Building(mirrored), gloss);
        color = Mix(color, floor * (0.86 + 0.16 * Ramp(cell.at.y, m_plan.square - 8, m_plan.square + 60)), square);
    }
    const double sun = 0.985 - 0.055 * (cell.at.x - m_plan.centerX) / m_plan.centerX
        + 0.03 * Cloud(cell.at.x / 700, cell.at.y / 700, 2, 109);
    return color * Rgb{sun, sun, 0.5 + 0.5 * sun};
}

std::vector<StraightEdge> Facade::Edges() const
{
    const double right = m_plan.width - 1;
    const double top = m_plan.eaves + kCorniceHeight;
    std::vector<StraightEdge> edges = {
        {"gutter", {10, m_plan.eaves + 9}, {right - 10, m_plan.eaves + 9}},
        {"cornice", {10, m_plan.eaves + 34}, {right - 10, m_plan.eaves + 34}},
    };
    for (double axis : m_plan.pilasters) {
        const double x = axis + kPilasterHalf;
        edges.push_back(
            {"pilaster at " + std::to_string(static_cast<int>(axis)), {x, top + 60}, {x, m_plan.ground - 10}});
    }
    for (int row : m_plan.crossStrips) {
        edges.push_back(
            {"far edge of row " + std::to_string(row), {10, RowEdge(row + 1)}, {right - 10, RowEdge(row + 1)}});
        edges.push_back({"near edge of row " + std::to_string(row), {10, RowEdge(row)}, {right - 10, RowEdge(row)}});
    }
    return edges;
}

std::vector<EvenPatch> Facade::Patches() const
{
    const double fascia = m_plan.eaves + 21;
    const double row = RowEdge(m_plan.crossStrips.front() + 0.5);
    const double right = m_plan.width - 1;
    const auto nearest = std::min_element(m_plan.pilasters.begin(), m_plan.pilasters.end(), [this](double a, double b) {
        return std::abs(a - m_plan.centerX) < std::abs(b - m_plan.centerX);
    });
    return {
        {"middle", {*nearest, m_plan.bottom / 2}, 8}, {"top left", {20, fascia}, 7},
        {"top right", {right - 20, fascia}, 7},       {"bottom left", {20, row}, 10},
        {"bottom right", {right - 20, row}, 10},
    };
}

} // namespace Samples
