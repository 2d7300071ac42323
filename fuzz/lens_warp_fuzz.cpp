// Corrects small pictures with arbitrary model values, not only those possible in a profile.
#include "Images.h"
#include "newLCP.h"

#include <QDomElement>

namespace {

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

} // namespace

FUZZ_TARGET(lens_warp)
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
}
