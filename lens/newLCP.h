// Lens profile in memory: the five lens models of an .lcp file, and the warp of a picture with them.
#pragma once

#include "LensParam.h"

class KImage;
class QDomElement;
class QString;

/// First entry of a lens correction profile as written by Adobe's Lens Profile Creator: XMP with RDF structure, in
/// element form; tags are compared including their prefix. A profile may have one entry per focal length, aperture and
/// distance; only the first one in the file is used.
///
/// Values in the file are fractions of the calibrated picture's size minus one. The pixel values of the models
/// (LensParam::centerX, centerY, focalPixels) hold for a picture of imageWidth by imageLength times `scale`.
class newLCP {
public:
    /// Reads @p fileName, once.
    ///
    /// @param ok  True if the file contains a profile. False if there is no rdf:li on the path of first child elements,
    /// if the rdf:li has no rdf:parseType="Resource" or no model element, or if the file is not XML or exceeds the
    /// limits of ReadProfileDocument. Unchanged if the file cannot be opened or read to its end, so callers must
    /// initialize it. Throws nothing. Truncated XML is used up to the error.
    newLCP(const QString &fileName, bool &ok);
    /// Same as above; also sets @p whyNotRead if a regular file can't be opened or read to its end.
    newLCP(const QString &fileName, bool &ok, QString *whyNotRead);
    /// Reads a parsed profile from its root element, and sets @p ok as above.
    newLCP(const QDomElement &root, bool &ok);

    /// Sets sensorFormatFactor to 1, and scale, sizes and modelKind to 0.
    void Init();
    /// Calls LensParam::Reset for the five models, then Init.
    void Reset();

    /// Returns the kind of the distortion and green models; the red and blue ones are always perspective.
    LensModel Kind() const { return modelKind != 0 ? LensModel::Fisheye : LensModel::Perspective; }

    /// Warps @p source into @p destination, on the calling thread.
    ///
    /// Without @p distortion and @p chromatic, only the vignetting gain is applied. If the profile lacks the model that
    /// this requires, @p destination stays unchanged (see InterpolatorKim).
    ///
    /// @param source       8 to 32 bits per channel; 9 to 15 are stored in 16-bit words, 17 to 32 are float. Not the
    ///                     same image as @p destination.
    /// @param destination  Allocated by the caller, 8, 16 or 32 bits per channel.
    /// @param mode         0: takes the pixel at the position rounded down; otherwise bilinear.
    /// @return             false, with @p destination untouched, for an empty image, an unsupported depth, or images
    ///                     that don't match.
    bool Render(KImage &source, KImage &destination, bool distortion, bool chromatic, bool falloff, int mode);

    // Keep this order; hosts that share kernels rely on it.
    float sensorFormatFactor = 1.0F; // read but unused
    float scale = 0.0F;              // current picture's size / profile's; the caller sets it before Render
    double imageWidth = 0.0;
    double imageLength = 0.0;
    int modelKind = 0; // a LensModel as a number; any value but 0 counts as fisheye
    LensParam distortionModel;
    LensParam greenModel;
    LensParam redGreenModel; // red relative to green
    LensParam blueGreenModel;
    LensParam vignetteModel;

private:
    bool ReadEntry(const QDomElement &root);
    void ReadMetadata(const QDomElement &element);
    void ReadModel(const QDomElement &modelElement);
    void ComputePixelValues();
};
