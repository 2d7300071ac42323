#include "ModelOracle.h"

#include <cmath>
#include <utility>

namespace {

/// Converts a position in the current picture to the sensor's orientation. From EXIF orientation 5 on, the picture's
/// sides are swapped.
OraclePoint ToSensor(const OraclePicture &p, OraclePoint at)
{
    const long double right = p.width - 1, bottom = p.height - 1;
    switch (p.turn) {
    case 2:
        return {right - at.x, at.y};
    case 3:
        return {right - at.x, bottom - at.y};
    case 4:
        return {at.x, bottom - at.y};
    case 5:
        return {at.y, at.x};
    case 6:
        return {at.y, bottom - at.x};
    case 7:
        return {right - at.y, bottom - at.x};
    case 8:
        return {right - at.y, at.x};
    default:
        return at;
    }
}

struct Placed {
    OraclePoint center;
    long double unit;
};

Placed Place(const ProfileModel &model, const OraclePicture &p)
{
    const auto center = [&](double share, long double side) {
        return (0.5L + (p.ownCenter ? share - 0.5L : 0.0L) / p.ratio) * side - 0.5L;
    };
    const long double longSide = std::fmax(p.wholeWidth, p.wholeHeight);
    return {{center(model.centerX, p.wholeWidth) - p.left, center(model.centerY, p.wholeHeight) - p.top},
            model.focalLengthX * longSide / p.ratio};
}

long double Series(const ProfileModel &model, long double x)
{
    long double sum = 1.0L, power = 1.0L;
    for (double coefficient : model.coefficients)
        sum += coefficient * (power *= x);
    return sum;
}

long double Angle(Projection projection, long double r)
{
    switch (projection) {
    case Projection::Rectilinear:
        return std::atan(r);
    case Projection::Equidistant:
        return r;
    case Projection::Stereographic:
        return 2.0L * std::atan(r / 2.0L);
    case Projection::Equisolid:
        return 2.0L * std::asin(r / 2.0L);
    }
    return r;
}

/// Returns s * unit * (k * u + t(u)), with u = (at - center) / unit.
OraclePoint Perspective(const ProfileModel &model, long double unit, OraclePoint center, OraclePoint at)
{
    const long double u = (at.x - center.x) / unit, v = (at.y - center.y) / unit, s = model.scaleFactor;
    const long double r2 = u * u + v * v, k = Series(model, r2), t1 = model.tangential1, t2 = model.tangential2;
    const long double du = (2.0L * u * u + r2) * t2 + 2.0L * u * v * t1;
    const long double dv = (2.0L * v * v + r2) * t1 + 2.0L * u * v * t2;
    return {s * unit * (k * u + du), s * unit * (k * v + dv)};
}

OraclePoint Fisheye(const ProfileModel &model, long double unit, OraclePoint center, OraclePoint at,
                    Projection projection)
{
    const long double u = (at.x - center.x) / unit, v = (at.y - center.y) / unit;
    const long double r = std::hypot(u, v), angle = Angle(projection, r);
    const long double k = r > 0.0L ? angle * Series(model, angle * angle) / r : 1.0L;
    return {unit * k * u, unit * k * v};
}

using Model = std::optional<ProfileModel> ProfileEntry::*;

OraclePoint Center(const OracleBlend &blend, Model model, const OraclePicture &p)
{
    OraclePoint center = {0.0L, 0.0L};
    for (const OraclePart &part : blend) {
        const Placed placed = Place(*(part.entry.*model), p);
        center.x += part.weight * placed.center.x;
        center.y += part.weight * placed.center.y;
    }
    return center;
}

OraclePoint Mapped(const OracleBlend &blend, Model model, const OraclePicture &p, OraclePoint at, Projection projection)
{
    const OraclePoint center = Center(blend, model, p);
    OraclePoint place = center;
    for (const OraclePart &part : blend) {
        const ProfileModel &one = *(part.entry.*model);
        const long double unit = Place(one, p).unit;
        const bool isFisheye = model == &ProfileEntry::green && part.entry.kind == ProfileEntry::Kind::Fisheye;
        const OraclePoint moved =
            isFisheye ? Fisheye(one, unit, center, at, projection) : Perspective(one, unit, center, at);
        place.x += part.weight * moved.x;
        place.y += part.weight * moved.y;
    }
    return place;
}

long double Gain(const OracleBlend &blend, const OraclePicture &p, OraclePoint g)
{
    const OraclePoint center = Center(blend, &ProfileEntry::vignette, p);
    long double stops = 0.0L;
    for (const OraclePart &part : blend) {
        const long double r = std::hypot(g.x - center.x, g.y - center.y) / Place(*part.entry.vignette, p).unit;
        stops += part.weight * std::log2(Series(*part.entry.vignette, r * r));
    }
    return std::exp2(-stops);
}

OraclePoint FromSensor(const OraclePicture &p, OraclePoint at)
{
    OraclePicture back = p;
    if (p.turn >= 5)
        std::swap(back.width, back.height);
    back.turn = p.turn == 6 ? 8 : p.turn == 8 ? 6 : p.turn; // only rotations by 90 degrees aren't their own inverses
    return ToSensor(back, at);
}

} // namespace

OraclePlaces OracleAt(const OracleBlend &blend, const OraclePicture &p, Projection projection, double zoom,
                      long double x, long double y)
{
    const OraclePoint corner = ToSensor(p, {x, y});
    const long double middleX = (p.width - 1) / 2.0L, middleY = (p.height - 1) / 2.0L;
    const OraclePoint a = {middleX + (corner.x - middleX) / zoom, middleY + (corner.y - middleY) / zoom};
    const auto mapped = [&](Model model, OraclePoint at) { return Mapped(blend, model, p, at, projection); };
    const OraclePoint g = mapped(&ProfileEntry::green, a);
    return {FromSensor(p, mapped(&ProfileEntry::redGreen, g)), FromSensor(p, g),
            FromSensor(p, mapped(&ProfileEntry::blueGreen, g)), Gain(blend, p, g)};
}
