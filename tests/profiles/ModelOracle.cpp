#include "ModelOracle.h"

#include <cmath>
#include <utility>

namespace {

/// Converts a position in the current picture to the sensor's; from orientation 5 on the picture's sides are swapped.
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

/// The inverse is the same for most; the two quarter turns are inverse to each other.
OraclePoint FromSensor(const OraclePicture &p, OraclePoint at)
{
    OraclePicture back = p;
    if (p.turn >= 5)
        std::swap(back.width, back.height);
    back.turn = p.turn == 6 ? 8 : p.turn == 8 ? 6 : p.turn;
    return ToSensor(back, at);
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

/// center + s unit (k u + t(u)) with u = (at - center) / unit
OraclePoint Perspective(const ProfileModel &model, const OraclePicture &p, OraclePoint at, long double s)
{
    const Placed placed = Place(model, p);
    const long double u = (at.x - placed.center.x) / placed.unit, v = (at.y - placed.center.y) / placed.unit;
    const long double r2 = u * u + v * v, k = Series(model, r2), t1 = model.tangential1, t2 = model.tangential2;
    const long double du = (2.0L * u * u + r2) * t2 + 2.0L * u * v * t1;
    const long double dv = (2.0L * v * v + r2) * t1 + 2.0L * u * v * t2;
    return {placed.center.x + s * placed.unit * (k * u + du), placed.center.y + s * placed.unit * (k * v + dv)};
}

OraclePoint Fisheye(const ProfileModel &model, const OraclePicture &p, OraclePoint at, Projection projection)
{
    const Placed placed = Place(model, p);
    const long double u = (at.x - placed.center.x) / placed.unit, v = (at.y - placed.center.y) / placed.unit;
    const long double r = std::hypot(u, v), angle = Angle(projection, r);
    const long double k = r > 0.0L ? angle * Series(model, angle * angle) / r : 1.0L;
    return {placed.center.x + placed.unit * k * u, placed.center.y + placed.unit * k * v};
}

} // namespace

OraclePlaces OracleAt(const ProfileEntry &entry, const OraclePicture &p, Projection projection, double zoom,
                      long double x, long double y)
{
    const OraclePoint corner = ToSensor(p, {x, y});
    const long double middleX = (p.width - 1) / 2.0L, middleY = (p.height - 1) / 2.0L;
    const OraclePoint a = {middleX + (corner.x - middleX) / zoom, middleY + (corner.y - middleY) / zoom};
    const OraclePoint g = entry.kind == ProfileEntry::Kind::Fisheye ? Fisheye(*entry.green, p, a, projection)
                                                                    : Perspective(*entry.green, p, a, 1.0L);
    const Placed light = Place(*entry.vignette, p);
    const long double r = std::hypot(g.x - light.center.x, g.y - light.center.y) / light.unit;
    return {FromSensor(p, Perspective(*entry.redGreen, p, g, entry.redGreen->scaleFactor)), FromSensor(p, g),
            FromSensor(p, Perspective(*entry.blueGreen, p, g, entry.blueGreen->scaleFactor)),
            1.0L / Series(*entry.vignette, r * r)};
}
