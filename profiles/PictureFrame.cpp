#include "PictureFrame.h"

#include "ImageDef.h"
#include "ProfileMatch.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kSameAspect = 1.02;   // aspect ratios that differ by no more than this factor count as equal
constexpr double kCropMode = 1.05;     // a 35 mm equivalent above this multiple of the expected one means a crop mode
constexpr double kMinShare = 0.02;     // of the sensor's sides; no camera crops to less
constexpr double kCenteredCrop = 0.01; // a crop this close to the center counts as centered

double Aspect(const QSize &size)
{
    return size.isEmpty() ? 0.0 : double(size.width()) / size.height();
}

double LongOverShort(double width, double height)
{
    return std::max(width, height) / std::min(width, height);
}

QString Percent(double share)
{
    return QStringLiteral("%1 %").arg(share * 100.0, 0, 'f', 0);
}

} // namespace

double LongSideMm(double factor, double width, double height)
{
    if (!(factor > 0.0) || !(width > 0.0) || !(height > 0.0))
        return 0.0;
    return kFullFrameDiagonalMm / factor * std::max(width, height) / std::hypot(width, height);
}

double CameraFactor(const QString &make, const QString &model)
{
    if (make.isEmpty() || model.isEmpty())
        return 0.0;
    return std::max(0.0, static_cast<double>(ImageDef::g_Cameras.GetSensorSize(make, model)));
}

PictureVector Turned(Orientation turn, const PictureVector &vector)
{
    const double x = vector.x, y = vector.y;
    switch (turn) { // EXIF 2.3, Orientation: the sides on which the first row and column are shown
    case 2:
        return {-x, y};
    case 3:
        return {-x, -y};
    case 4:
        return {x, -y};
    case 5:
        return {y, x};
    case 6:
        return {-y, x};
    case 7:
        return {-y, -x};
    case 8:
        return {y, -x};
    default:
        return {x, y};
    }
}

bool IsSameBody(const ProfileEntry &entry, const PictureBody &body)
{
    const QString names[] = {entry.model, entry.uniqueModel, entry.cameraName};
    return std::any_of(std::begin(names), std::end(names),
                       [&](const QString &name) { return IsSameModel(body.make, body.model, entry.make, name); });
}

PictureFrame::PictureFrame(const PictureFacts &facts, const PictureBody &body)
    : m_facts(facts), m_body(body), m_bodyFactor(CameraFactor(body.make, body.model))
{
    m_place.turn = facts.readerTurn;
    m_place.width = facts.pixels.width();
    m_place.height = facts.pixels.height();
    if (facts.readerTurn >= 5)
        std::swap(m_place.width, m_place.height);
    if (!facts.crop.Known())
        return;
    const QRectF &crop = facts.crop.value;
    m_place.width /= crop.width();
    m_place.height /= crop.height();
    m_place.middleX = (crop.center().x() - 0.5) * m_place.width;
    m_place.middleY = (crop.center().y() - 0.5) * m_place.height;
}

/// Returns whether a picture can show as little as @p share of the sensor; if not, notes that @p source is ignored.
static bool IsCredible(double share, const QString &source, QStringList *assumed)
{
    if (share >= kMinShare)
        return true;
    *assumed << QStringLiteral("the %1 is ignored: it would mean less than %2 of the sensor's sides")
                    .arg(source, Percent(kMinShare));
    return false;
}

double PictureFrame::FrameShare(double factor, QStringList *assumed) const
{
    double crop = 1.0;
    if (factor > 0.0 && m_facts.focal35Mm.value > 0.0 && m_facts.focalMm.value > 0.0) {
        const double expected = m_facts.focalMm.value * factor, given = m_facts.focal35Mm.value;
        const bool isRounded = std::abs(given - expected) <= 0.5; // given in whole millimeters
        if (given > expected * kCropMode && !isRounded) {
            const QString source = QStringLiteral("35 mm equivalent of %1 mm").arg(given);
            if (IsCredible(expected / given, source, assumed)) {
                crop = given / expected;
                *assumed << QStringLiteral("only part of the sensor, %1 of its sides, according to the %2")
                                .arg(Percent(1.0 / crop), source);
            }
        } else if (given * kCropMode < expected && !isRounded) {
            *assumed << QStringLiteral("the whole sensor, though the 35 mm equivalent of %1 mm would need a larger one")
                            .arg(given);
        }
    }
    const double zoom = m_facts.digitalZoom.value;
    const bool cropsMore = zoom > crop * 1.01; // some makers include the zoom in the 35 mm equivalent
    if (cropsMore && IsCredible(1.0 / zoom, QStringLiteral("digital zoom of %1").arg(zoom, 0, 'g', 10), assumed)) {
        crop = zoom;
        *assumed << QStringLiteral("only part of the sensor, %1 of its sides, according to the digital zoom")
                        .arg(Percent(1.0 / zoom));
    }
    return 1.0 / crop;
}

/// Returns whether the picture was rotated by 90 degrees before it was stored.
bool PictureFrame::IsRotated(const QSizeF &reference) const
{
    if (!m_facts.crop.Known())
        return reference.height() > reference.width() ? m_place.width > m_place.height : m_place.height > m_place.width;
    // A crop may have any shape: choose the orientation in which the whole picture has the profile's proportions.
    const double profileAspect = reference.isEmpty() ? 1.5 : reference.width() / reference.height();
    const double mismatch = std::abs(std::log(m_place.width / m_place.height / profileAspect));
    const PictureVector rotated = SidesIfRotated();
    return mismatch > std::log(kSameAspect) && std::abs(std::log(rotated.x / rotated.y / profileAspect)) < mismatch;
}

/// Returns the sides that the whole picture has if the current one was rotated by 90 degrees.
PictureVector PictureFrame::SidesIfRotated() const
{
    const QRectF crop = m_facts.crop.Known() ? m_facts.crop.value : QRectF(0.0, 0.0, 1.0, 1.0);
    const double cropRatio = crop.width() / crop.height();
    return {m_place.height / cropRatio, m_place.width * cropRatio};
}

/// Sets the ratio of the frames, and the focal length for models that give none.
/// @param aspect  aspect ratio of the picture's frame.
bool PictureFrame::SetRatio(const ProfileEntry &entry, double aspect, EntryFrame *frame, QString *why) const
{
    const bool isSame = IsSameBody(entry, m_body), hasSize = entry.width > 0.0 && entry.height > 0.0;
    double factor =
        isSame ? m_bodyFactor : CameraFactor(entry.make, entry.model.isEmpty() ? entry.uniqueModel : entry.model);
    if (!(factor > 0.0))
        factor = entry.sensorFormatFactor;
    const double profileLong = hasSize ? LongSideMm(factor, entry.width, entry.height)
        : isSame                       ? LongSideMm(factor, aspect, 1.0)
                                       : 0.0;
    frame->focalLength = profileLong > 0.0 ? entry.focalMm / profileLong : 0.0;
    if (isSame) {
        frame->ratio = FrameShare(factor, &frame->assumed);
        return true;
    }
    double pictureLong = LongSideMm(m_bodyFactor, aspect, 1.0);
    if (!(pictureLong > 0.0))
        pictureLong = m_facts.focalPlaneWidthMm.value;
    if (!(pictureLong > 0.0)) {
        *why = m_body.model.isEmpty() ? QStringLiteral("the picture doesn't name its camera; name it with --body")
                                      : QStringLiteral("the size of the sensor of \"%1\" is unknown").arg(m_body.model);
        return false;
    }
    if (!(profileLong > 0.0)) {
        *why = QStringLiteral("the size of the frame that the profile was made from is unknown");
        return false;
    }
    frame->ratio = pictureLong / profileLong * FrameShare(m_bodyFactor, &frame->assumed);
    frame->assumed << QStringLiteral("made with another body, %1: the picture's frame is %2 of that body's")
                          .arg(entry.model.isEmpty() ? entry.cameraName : entry.model, Percent(frame->ratio));
    return true;
}

bool PictureFrame::LimitRatio(bool chosen, EntryFrame *frame, QString *why) const
{
    if (frame->ratio <= kMaxFrameRatio)
        return true;
    const QString text = QStringLiteral("the profile was made from a smaller frame (the picture's is %1 of it)")
                             .arg(Percent(frame->ratio));
    if (chosen)
        frame->assumed << text + QStringLiteral(": its edges are extrapolated");
    else
        *why = text;
    return chosen;
}

std::optional<FrameShape> PictureFrame::Shape(const QSizeF &reference, double aspect, QString *why) const
{
    FrameShape shape;
    PictureVector sides{m_place.width, m_place.height};
    shape.isRotated = IsRotated(reference);
    if (shape.isRotated && m_facts.crop.Known()) {
        sides = SidesIfRotated();
        const QPointF offset = m_facts.crop.value.center() - QPointF(0.5, 0.5);
        if (std::max(std::abs(offset.x()), std::abs(offset.y())) > kCenteredCrop) {
            *why = QStringLiteral("the picture was cropped from a rotated one, and its position there is unknown");
            return std::nullopt;
        }
    }
    shape.longPx = std::max(sides.x, sides.y);
    shape.shortPx = std::min(sides.x, sides.y);
    const double pictureAspect = shape.longPx / shape.shortPx, ownAspect = Aspect(m_facts.original.value);
    if (!(aspect > 0.0))
        aspect = ownAspect > 0.0 ? LongOverShort(ownAspect, 1.0) : pictureAspect;
    const bool isWider = pictureAspect > aspect * kSameAspect, isNarrower = pictureAspect * kSameAspect < aspect;
    shape.isCut = isWider || isNarrower;
    shape.aspect = aspect;
    if (isNarrower)
        shape.longPx = shape.shortPx * aspect;
    if (isWider)
        shape.shortPx = shape.longPx / aspect;
    if (shape.isCut)
        shape.assumed << QStringLiteral("cropped from the center of a %1:1 frame").arg(aspect, 0, 'f', 2);
    if (shape.isRotated)
        shape.assumed << QStringLiteral(
            "rotated in an unknown direction: the lens's center is assumed to be in the middle");
    return shape;
}

std::optional<EntryFrame> PictureFrame::ForEntry(const ProfileEntry &entry, bool chosen, QString *why) const
{
    EntryFrame frame;
    const bool isSame = IsSameBody(entry, m_body), hasSize = entry.width > 0.0 && entry.height > 0.0;
    const QSizeF size = hasSize ? QSizeF(entry.width, entry.height) : QSizeF();
    const double profileAspect = isSame && hasSize ? LongOverShort(entry.width, entry.height) : 0.0;
    const auto shape = Shape(size, profileAspect, why);
    if (!shape)
        return std::nullopt;
    if (!SetRatio(entry, shape->aspect, &frame, why) || !LimitRatio(chosen, &frame, why))
        return std::nullopt;
    frame.unitPx = shape->longPx / frame.ratio;
    frame.isDirectionKnown = !shape->isRotated;
    frame.assumed += shape->assumed;
    if (isSame && hasSize && !shape->isCut && !shape->isRotated)
        frame.frameHeight = entry.height / entry.width;
    return frame;
}

PictureVector PictureFrame::CenterOf(const ProfileModel &model, const EntryFrame &frame) const
{
    PictureVector fromMiddle{-m_place.middleX, -m_place.middleY};
    if (frame.frameHeight > 0.0) {
        const double width = frame.frameHeight > 1.0 ? frame.unitPx / frame.frameHeight : frame.unitPx;
        fromMiddle.x += (model.centerX - 0.5) * width;
        fromMiddle.y += (model.centerY - 0.5) * width * frame.frameHeight;
    }
    const PictureVector turned = Turned(m_place.turn, fromMiddle);
    return {(m_facts.pixels.width() - 1) / 2.0 + turned.x, (m_facts.pixels.height() - 1) / 2.0 + turned.y};
}
