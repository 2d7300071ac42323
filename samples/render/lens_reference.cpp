#include "lens_reference.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace Samples {
namespace {

struct Frame {
    Point center;
    double focal;
};

Frame PixelFrame(const LensProfile &profile, const LensModel &model)
{
    const double s = model.scaleFactor;
    return {{s * model.centerX * (profile.width - 1), s * model.centerY * (profile.height - 1)},
            s * model.focalLength * (profile.width - 1)};
}

double Coefficient(const LensModel &model, size_t index)
{
    return index < model.coefficients.size() ? model.coefficients[index] : 0;
}

/// Returns x (1 + c0 x^2 + c1 x^4 + c2 x^6): the radius of the perspective model or, for an angle x, of the fisheye
/// model.
double RadialValue(const LensModel &model, double x)
{
    const double x2 = x * x;
    return x * (1 + x2 * (Coefficient(model, 0) + x2 * (Coefficient(model, 1) + x2 * Coefficient(model, 2))));
}

double RadialSlope(const LensModel &model, double x)
{
    const double x2 = x * x;
    return 1 + x2 * (3 * Coefficient(model, 0) + x2 * (5 * Coefficient(model, 1) + x2 * 7 * Coefficient(model, 2)));
}

/// Solves RadialValue(x) = value by Newton's method, starting from the identity.
double SolveRadial(const LensModel &model, double value)
{
    double x = value;
    for (int step = 0; step < 50; ++step) {
        const double change = (RadialValue(model, x) - value) / RadialSlope(model, x);
        x -= change;
        if (std::abs(change) < 1e-14)
            break;
    }
    return x;
}

/// XML elements at one level of indentation.
class Elements {
public:
    explicit Elements(const std::string &indent) : m_indent(indent) { m_text.precision(9); }

    template <typename T> void Add(const char *tag, const T &value)
    {
        m_text << m_indent << "<stCamera:" << tag << ">" << value << "</stCamera:" << tag << ">\n";
    }

    void AddModel(const LensModel &model, const char *term)
    {
        if (model.scaleFactor != 1)
            Add("ScaleFactor", model.scaleFactor);
        Add("FocalLengthX", model.focalLength);
        Add("FocalLengthY", model.focalLengthY.value_or(model.focalLength));
        Add("ImageXCenter", model.centerX);
        Add("ImageYCenter", model.centerY);
        for (size_t i = 0; i < model.coefficients.size(); ++i)
            Add((term + std::to_string(i + 1)).c_str(), model.coefficients[i]);
        if (model.tangential1 != 0 || model.tangential2 != 0) {
            Add("TangentialDistortParam1", model.tangential1);
            Add("TangentialDistortParam2", model.tangential2);
        }
    }

    void AddGroup(const char *tag, const Elements &inner)
    {
        m_text << m_indent << "<stCamera:" << tag << " rdf:parseType=\"Resource\">\n"
               << inner.Text() << m_indent << "</stCamera:" << tag << ">\n";
    }

    void AddSubModel(const char *tag, const std::optional<LensModel> &model, const char *term)
    {
        if (!model)
            return;
        Elements inner(m_indent + "  ");
        inner.AddModel(*model, term);
        AddGroup(tag, inner);
    }

    std::string Text() const { return m_text.str(); }

private:
    std::string m_indent;
    std::ostringstream m_text;
};

} // namespace

Projection MainProjection(const LensProfile &profile)
{
    return profile.fisheye ? Projection::Fisheye : Projection::Perspective;
}

Point ToSource(const LensProfile &profile, const LensModel &model, Projection projection, Point corrected)
{
    const Frame frame = PixelFrame(profile, model);
    const double u = (corrected.x - frame.center.x) / frame.focal;
    const double v = (corrected.y - frame.center.y) / frame.focal;
    const double r = std::hypot(u, v);
    if (r == 0)
        return corrected;
    const double radius = RadialValue(model, projection == Projection::Fisheye ? std::atan(r) : r);
    const double t1 = projection == Projection::Fisheye ? 0 : model.tangential1;
    const double t2 = projection == Projection::Fisheye ? 0 : model.tangential2;
    const double dx = (2 * u * u + r * r) * t2 + 2 * u * v * t1;
    const double dy = (2 * v * v + r * r) * t1 + 2 * u * v * t2;
    return {frame.center.x + frame.focal * (u * radius / r + dx), frame.center.y + frame.focal * (v * radius / r + dy)};
}

Inverse ToCorrected(const LensProfile &profile, const LensModel &model, Projection projection, Point source)
{
    const Frame frame = PixelFrame(profile, model);
    const double u = (source.x - frame.center.x) / frame.focal;
    const double v = (source.y - frame.center.y) / frame.focal;
    const double r = std::hypot(u, v);
    if (r == 0)
        return {source, {{1, 0}, {0, 1}}};
    const double solved = SolveRadial(model, r);
    const bool fisheye = projection == Projection::Fisheye;
    const double radius = fisheye ? std::tan(solved) : solved;
    const double along = (fisheye ? 1 + radius * radius : 1) / RadialSlope(model, solved);
    const double across = radius / r;
    const double nx = u / r;
    const double ny = v / r;
    const double mixed = (along - across) * nx * ny;
    return {{frame.center.x + frame.focal * radius * nx, frame.center.y + frame.focal * radius * ny},
            {{across + (along - across) * nx * nx, mixed}, {mixed, across + (along - across) * ny * ny}}};
}

double Gain(const LensProfile &profile, Point source)
{
    if (!profile.vignette)
        return 1;
    const LensModel &model = *profile.vignette;
    const Frame frame = PixelFrame(profile, model);
    const double side = std::max(profile.width, profile.height);
    const double u = (source.x - frame.center.x) / (side * model.focalLength);
    const double v = (source.y - frame.center.y) / (side * model.focalLengthY.value_or(model.focalLength));
    const double x = u * u + v * v;
    const double a = Coefficient(model, 0);
    const double b = Coefficient(model, 1);
    const double d = Coefficient(model, 2);
    const double x3 = a * a * a - 2 * a * b + d;
    const double x4 = a * a * a * a - 3 * a * a * b + 2 * a * d + b * b;
    return 1 + x * (-a + x * ((a * a - b) + x * (-x3 + x * x4)));
}

Point Turned(Point upright, int uprightWidth, Hold hold)
{
    return hold == Hold::Landscape ? upright : Point{upright.y, uprightWidth - 1 - upright.x};
}

Point Upright(Point turned, int uprightWidth, Hold hold)
{
    return hold == Hold::Landscape ? turned : Point{uprightWidth - 1 - turned.y, turned.x};
}

std::string ProfileText(const LensProfile &profile)
{
    Elements model("       ");
    model.Add("Version", 2);
    model.AddModel(profile.distortion, "RadialDistortParam");
    model.AddSubModel("ChromaticGreenModel", profile.green, "RadialDistortParam");
    model.AddSubModel("ChromaticRedGreenModel", profile.redGreen, "RadialDistortParam");
    model.AddSubModel("ChromaticBlueGreenModel", profile.blueGreen, "RadialDistortParam");
    model.AddSubModel("VignetteModel", profile.vignette, "VignetteModelParam");
    Elements entry("      ");
    entry.Add("ProfileName", profile.name);
    entry.Add("Make", profile.camera.substr(0, profile.camera.find(' ')));
    entry.Add("Model", profile.camera);
    entry.Add("Lens", profile.lens);
    entry.Add("ImageWidth", profile.width);
    entry.Add("ImageLength", profile.height);
    entry.AddGroup(profile.fisheye ? "FisheyeModel" : "PerspectiveModel", model);
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "  <rdf:Description rdf:about=\"\" xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\"\n"
           "    xmlns:stCamera=\"http://ns.adobe.com/photoshop/1.0/camera-profile\">\n"
           "   <photoshop:CameraProfiles>\n    <rdf:Seq>\n     <rdf:li rdf:parseType=\"Resource\">\n"
        + entry.Text()
        + "     </rdf:li>\n    </rdf:Seq>\n   </photoshop:CameraProfiles>\n"
          "  </rdf:Description>\n </rdf:RDF>\n</x:xmpmeta>\n";
}

} // namespace Samples
