// Start and stop of the image module.
#include "ImageDatas.h"
#include "KImage.h"
#include "KImage_p.h"
#include "KOmp.h"
#include "KTools.h"

#include <QDir>

#include <cstdlib>

namespace {

bool s_startedAlone = false; // this copy of the module made its own objects and started the image-file layer

/// The tables of cameras and lenses: "Data:cameras.txt", "Data:lensid.txt".
void RegisterData()
{
    const QString prefix = QStringLiteral("Data"), folder = QStringLiteral(":/Data");
    if (!QDir::searchPaths(prefix).contains(folder)) // host and plug-in each have a copy of this module
        QDir::addSearchPath(prefix, folder);
}

} // namespace

void *alloc_callback(unsigned long size, void *)
{
    return std::malloc(size);
}

void *realloc_callback(void *pointer, unsigned long size, void *)
{
    return std::realloc(pointer, size);
}

void free_callback(void *pointer, void *)
{
    std::free(pointer);
}

void KImage::init(KImageInstances *instances)
{
    if (s_startedAlone)
        return;
    Q_INIT_RESOURCE(KImage); // a static library drops resources that nothing names
    RegisterData();
    KTools::init(instances ? instances->tools : nullptr);
    if (instances) {
        ImageDatas::settings = instances->settings; // the image-file layer is the host's to start
    } else {
        ImageDatas::settings = new ImageDatas;
        gflLibraryInitEx(alloc_callback, realloc_callback, free_callback, nullptr);
        gflEnableLZW(1);
        gflSetThreads(komp_num_threads);
        s_startedAlone = true;
    }
    ms_instances.tools = &KTools::ms_instances;
    ms_instances.settings = ImageDatas::settings;
}

void KImage::exit()
{
    KTools::exit();
    if (!s_startedAlone)
        return;
    delete ImageDatas::settings;
    ImageDatas::settings = nullptr;
    ms_instances = {};
    gflLibraryExit();
    s_startedAlone = false;
}
