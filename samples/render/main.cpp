// render-samples DIR: writes the sample pictures and their profiles to DIR.
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "set.h"

namespace {

void WriteText(const std::string &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw std::runtime_error(path + ": can't be written");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: render-samples DIR\n");
        return 2;
    }
    try {
        const std::string folder = argv[1];
        for (const Samples::Sample &sample : Samples::AllSamples()) {
            WriteText(folder + "/" + sample.profile + ".lcp", Samples::ProfileText(sample.lens));
            const std::string path = folder + "/" + sample.picture + ".jpg";
            Samples::WriteJpeg(path, Samples::Photograph(*sample.scene, sample.lens, sample.hold), sample.lens,
                               sample.caption);
            std::printf("%s\n", path.c_str());
        }
    } catch (const std::exception &e) {
        std::fprintf(stderr, "render-samples: %s\n", e.what());
        return 1;
    }
    return 0;
}
