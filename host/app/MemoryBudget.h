// Memory limit for pictures corrected in parallel.
#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <mutex>

class ImageDef;
class QDomElement;

enum class Corrector {
    Plain,         ///< reads a copy of the picture, converted to floats as a whole if the lens has extreme distortion
    Fitted,        ///< reads the picture itself, as stored if it is 8- or 16-bit RGB
    FittedByFloats ///< reads the picture itself; each thread has a window of rows as floats
};

/// Returns the bytes needed to correct a picture, an upper bound for all but very unusual files. In MiB, at 24
/// megapixels with three corrections on two threads:
///
/// | corrector      | file                             | measured | returned |
/// |----------------|----------------------------------|----------|----------|
/// | Fitted         | JPEG                             | 125      | 286      |
/// | Fitted         | 16-bit TIFF                      | 203      | 217      |
/// | FittedByFloats | JPEG, extreme distortion         | 282      | 469      |
/// | FittedByFloats | 16-bit TIFF, extreme distortion  | 358      | 400      |
/// | Plain          | JPEG                             | 226      | 583      |
/// | Plain          | JPEG, extreme distortion         | 543      | 583      |
/// | Plain          | float TIFF                       | 954      | 995      |
qint64 BytesToCorrect(const ImageDef &image, Corrector corrector);
/// Returns how a fitted record with these parameters corrects a picture.
Corrector CorrectorOf(const QDomElement &parameters);

/// Returns the bytes available without swapping; 0 if the system doesn't report them.
qint64 AvailableBytes();

/// Memory limit shared by several pictures. Threads wait until their picture fits; a single picture is always admitted.
/// Thread-safe.
class MemoryBudget {
public:
    /// @param bytes  for all pictures together; 0 means no limit.
    explicit MemoryBudget(qint64 bytes) : m_limitBytes(bytes) { }

    /// The share of one picture, released at the end of the object's scope.
    class Share {
    public:
        Share(MemoryBudget *budget, qint64 bytes);
        ~Share();
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

    private:
        MemoryBudget *m_budget;
        qint64 m_bytes;
    };

private:
    const qint64 m_limitBytes;
    std::mutex m_mutex; // guards m_usedBytes
    std::condition_variable m_freed;
    qint64 m_usedBytes = 0;
};
