// Corrects small pictures with arbitrary model values, not only those possible in a profile.
#include "KImage.h"
#include "newLCP.h"

#include <QDomElement>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

/// Reads the input value by value; returns zeros after its end.
class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) : m_data(data), m_left(size) { }
    template <typename T> T Next()
    {
        T value{};
        if (m_left >= sizeof value) {
            std::memcpy(&value, m_data, sizeof value);
            m_data += sizeof value;
            m_left -= sizeof value;
        }
        return value;
    }
    int Below(int end) { return Next<std::uint8_t>() % end; }

private:
    const std::uint8_t *m_data;
    std::size_t m_left;
};

void FillModel(Input &input, LensParam &model)
{
    model.found = input.Below(8) != 0;
    model.scaleFactor = input.Next<float>();
    model.focalPixels = input.Next<float>();
    for (double *value : {&model.focalLengthX, &model.focalLengthY, &model.centerX, &model.centerY, &model.tangential1})
        *value = static_cast<double>(input.Next<float>());
    for (int count = input.Below(5); count > 0; --count)
        model.coefficients.append(input.Next<float>());
}

KImage AnyImage(Input &input)
{
    const unsigned short types[] = {GFL_GREY, GFL_RGB, GFL_RGBA};
    const int depths[] = {8, 12, 16, 32};
    const int width = 1 + input.Below(12), height = 1 + input.Below(12);
    const unsigned short type = types[input.Below(3)];
    return KImage(width, height, type, depths[input.Below(4)], /*clear=*/true, nullptr, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    bool ok = false;
    newLCP lcp((QDomElement()), ok);
    const int switches = input.Below(16);
    lcp.modelKind = input.Below(2);
    KImage source = AnyImage(input), destination = AnyImage(input);
    lcp.scale = input.Next<float>();
    for (LensParam *model :
         {&lcp.distortionModel, &lcp.greenModel, &lcp.redGreenModel, &lcp.blueGreenModel, &lcp.vignetteModel})
        FillModel(input, *model);
    lcp.Render(source, destination, switches & 1, switches & 2, switches & 4, switches & 8);
    return 0;
}
