#include "instruments/Cameras.h"

#include <QtGlobal>

#include <dlfcn.h>

namespace
{

/// The library's function that makes the cameras; null where there is none.
void* LoadLibrary()
{
    // By its name alone: the program's RUNPATH leads to it.
    void* library = dlopen("libmosk-cameras.so", RTLD_NOW);
    void* find = library != nullptr ? dlsym(library, "FindCameras") : nullptr;
    if (find == nullptr) {
        qWarning("No cameras: %s", dlerror());
    }
    return find;
}

} // namespace

std::unique_ptr<Cameras> Cameras::Find(QWidget* page)
{
    static const auto find = reinterpret_cast<Cameras* (*)(QWidget*)>(LoadLibrary());
    return std::unique_ptr<Cameras>(find != nullptr ? find(page) : nullptr);
}
