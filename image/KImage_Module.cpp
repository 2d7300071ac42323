// Starts and stops the image module.
#include "ImageDatas.h"
#include "KImage.h"
#include "KImageLoader.h"
#include "KImage_p.h"
#include "KOmp.h"
#include "KTools.h"
#include "ippi.h"

#include <QDir>

#include <cstdlib>

namespace {

bool s_startedAlone = false; // this copy of the module created the shared objects and started the image-file layer
bool s_ownsCache = false;    // this copy created the cache, because it runs alone or the host shares none

/// Registers the tables of cameras and lenses: "Data:cameras.txt", "Data:lensid.txt".
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
    Q_INIT_RESOURCE(KImage); // unreferenced resources of a static library are not linked
    RegisterData();
    ippInit();
    KTools::init(instances ? instances->tools : nullptr);
    if (instances) {
        ImageDatas::settings = instances->settings; // the host starts the image-file layer
        if (instances->cache)
            KImageCache::SetInstance(instances->cache);
    } else {
        ImageDatas::settings = new ImageDatas;
        gflLibraryInitEx(alloc_callback, realloc_callback, free_callback, nullptr);
        gflEnableLZW(1);
        gflSetThreads(komp_num_threads);
        s_startedAlone = true;
    }
    s_ownsCache = !instances || !instances->cache;
    ms_instances.tools = &KTools::ms_instances;
    ms_instances.cache = &KImageCache::Instance();
    ms_instances.settings = ImageDatas::settings;
}

void KImage::exit()
{
    if (s_ownsCache) { // before KTools::exit, which removes the folders of the disk copies only if they are empty
        delete KImageCache::ms_instance;
        KImageCache::SetInstance(nullptr);
        ms_instances.cache = nullptr;
        s_ownsCache = false;
    }
    KTools::exit();
    if (!s_startedAlone)
        return;
    delete ImageDatas::settings;
    ImageDatas::settings = nullptr;
    ms_instances = {};
    gflLibraryExit();
    s_startedAlone = false;
}
