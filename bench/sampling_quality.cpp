// Measures how well each sampling method preserves waves and edges when a wide-angle lens is corrected. Prints a table
// and plots it to the SVG file named on the command line, if any.
#include "FittedWarp.h"
#include "KImage.h"
#include "SamplingQuality.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

std::vector<double> RenderFitted(const std::vector<double> &gray, const Correction &lens, FittedWarp::Sampling sampling)
{
    std::vector<float> source, target(gray.size() * 4);
    for (double value : gray)
        source.insert(source.end(), {float(value), float(value), float(value), 1.0F});
    const auto image = [&](std::vector<float> &pixels) {
        return KImage(lens.width, lens.height, GFL_RGBA, 32, /*clear=*/false,
                      reinterpret_cast<unsigned char *>(pixels.data()), lens.width * 16);
    };
    const KImage from = image(source);
    KImage to = image(target);
    if (!FittedWarp(lens, sampling, TransferCurve::Linear(), {}).Render(from, 0, to, 0))
        std::abort(); // the whole source is in memory
    std::vector<double> result;
    for (std::size_t i = 0; i < target.size(); i += 4)
        result.push_back(double(target[i]));
    return result;
}

/// Returns the cubic convolution kernel (Keys 1981) with a = -1/2.
double CatmullRom(double x)
{
    x = std::abs(x);
    return x < 1.0 ? 1.0 + x * x * (1.5 * x - 2.5) : x < 2.0 ? 2.0 + x * (-4.0 + x * (2.5 - 0.5 * x)) : 0.0;
}

double Sinc(double x)
{
    return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
}

double Lanczos3(double x)
{
    return std::abs(x) < 3.0 ? Sinc(x) * Sinc(x / 3.0) : 0.0;
}

/// Renders with a kernel of up to 6 x 6 pixels, normalized to a sum of 1.
std::vector<double> RenderByKernel(const std::vector<double> &gray, const Correction &lens, double (*kernel)(double))
{
    const CorrectionTwin twin(lens);
    std::vector<double> result;
    for (int i = 0; i < lens.width * lens.height; ++i) {
        const SourcePlaces::Point place = twin.At(i % lens.width, i / lens.width).green;
        double sum = 0.0, weights = 0.0;
        for (int tap = 0; tap < 36; ++tap) {
            const int x = int(std::floor(place.x)) - 2 + tap % 6, y = int(std::floor(place.y)) - 2 + tap / 6;
            const double weight = kernel(place.x - x) * kernel(place.y - y);
            weights += weight;
            sum += weight
                * gray[std::size_t(std::clamp(y, 0, lens.height - 1) * lens.width + std::clamp(x, 0, lens.width - 1))];
        }
        result.push_back(sum / weights);
    }
    return result;
}

struct Sampling {
    const char *name, *color;
    GrayRenderer render;
    std::vector<SamplingQuality> waves; // one per frequency in kFrequencies
};

const double kFrequencies[] = {0.05, 0.1, 0.15, 0.2, 0.25, 0.3, 0.35, 0.4, 0.45};

/// Returns a polyline, dashed for false detail.
std::string Line(const Sampling &sampling, bool isFalseDetail)
{
    std::string points;
    for (std::size_t i = 0; i < sampling.waves.size(); ++i) {
        const double value = isFalseDetail ? sampling.waves[i].falseDetail : sampling.waves[i].contrast;
        points += std::to_string(60.0 + 1200.0 * kFrequencies[i]) + ',' + std::to_string(340.0 - 250.0 * value) + ' ';
    }
    return "<polyline fill=\"none\" stroke-width=\"2\" stroke=\"" + std::string(sampling.color)
        + (isFalseDetail ? "\" stroke-dasharray=\"5 4" : "") + "\" points=\"" + points + "\"/>\n";
}

std::string Text(double x, double y, const std::string &text, const std::string &style)
{
    return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" " + style + ">" + text + "</text>\n";
}

void Plot(const std::vector<Sampling> &samplings, const char *path)
{
    std::ofstream svg(path);
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 760 390\" font-family=\"sans-serif\" "
           "font-size=\"13\">\n<rect width=\"760\" height=\"390\" fill=\"white\"/>\n";
    for (int tenths = 0; tenths <= 10; tenths += 2) {
        const double y = 340.0 - 25.0 * tenths;
        svg << "<path d=\"M60 " << y << "H620\" stroke=\"#ddd\"/>\n"
            << Text(52, y + 4, std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10), "text-anchor=\"end\"");
    }
    for (int hundredths = 5; hundredths <= 45; hundredths += 10)
        svg << Text(60 + 12 * hundredths, 358, (hundredths < 10 ? "0.0" : "0.") + std::to_string(hundredths),
                    "text-anchor=\"middle\"");
    svg << Text(340, 380, "cycles per pixel", "text-anchor=\"middle\"")
        << Text(60, 40, "Contrast kept (lines) and false detail (dashes)", "font-weight=\"bold\"");
    double y = 80.0;
    for (const Sampling &sampling : samplings) {
        svg << Line(sampling, false) << Line(sampling, true)
            << Text(635, y += 20.0, sampling.name, "fill=\"" + std::string(sampling.color) + '"');
    }
    svg << "</svg>\n";
}

} // namespace

int main(int argc, char **argv)
{
    using Gray = std::vector<double>;
    const auto fitted = [](FittedWarp::Sampling sampling) {
        return [=](const Gray &gray, const Correction &lens) { return RenderFitted(gray, lens, sampling); };
    };
    const auto byKernel = [](double (*kernel)(double)) {
        return [=](const Gray &gray, const Correction &lens) { return RenderByKernel(gray, lens, kernel); };
    };
    std::vector<Sampling> samplings = {{"bilinear", "#888", fitted(FittedWarp::Sampling::Bilinear), {}},
                                       {"Catmull-Rom", "#c70", byKernel(CatmullRom), {}},
                                       {"Lanczos 3", "#07c", byKernel(Lanczos3), {}},
                                       {"sharp", "#c03", fitted(FittedWarp::Sampling::Sharp), {}}};
    std::printf("| cycles per pixel |");
    for (const Sampling &sampling : samplings)
        std::printf(" %s |", sampling.name);
    std::printf("\n|---|---|---|---|---|\n");
    for (double frequency : kFrequencies) {
        std::printf("| %.2f |", frequency);
        for (Sampling &sampling : samplings) {
            sampling.waves.push_back(QualityOf(sampling.render, frequency, 0.0));
            std::printf(" %.3f / %.3f |", sampling.waves.back().contrast, sampling.waves.back().falseDetail);
        }
        std::printf("\n");
    }
    std::printf("| overshoot |");
    for (const Sampling &sampling : samplings) {
        double most = 0.0;
        for (double soft : {-1.0, 0.0, 0.3, 0.5, 0.8})
            for (int degrees = 0; degrees <= 90; degrees += 5)
                most = std::max(most, OvershootOf(sampling.render, degrees * kPi / 180.0, soft));
        std::printf(" %.1f %% |", most * 100.0);
    }
    std::printf("\n");
    if (argc > 1)
        Plot(samplings, argv[1]);
}
