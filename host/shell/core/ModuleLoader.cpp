#include "host/shell/core/ModuleLoader.h"

#include <dlfcn.h>

namespace shell {

ModuleLoader::~ModuleLoader() {
    UnloadAll();
}

void ModuleLoader::UnloadAll() {
    for (const auto& [file, handle] : handles) {
        dlclose(handle);
    }
    handles.clear();
}

std::string ModuleLoader::Load(const std::filesystem::path& file) {
    if (handles.find(file) != handles.end()) {
        return {};
    }
    // A path without a separator would make the loader search its own folders.
    const std::filesystem::path whole = std::filesystem::absolute(file);
    void* handle = dlopen(whole.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = dlerror();
        return "module '" + file.string() + "' cannot be loaded: " + (reason ? reason : "unknown reason");
    }
    handles[file] = handle;
    return {};
}

bool ModuleLoader::Unload(const std::filesystem::path& file) {
    const auto found = handles.find(file);
    if (found == handles.end()) {
        return false;
    }
    dlclose(found->second);
    handles.erase(found);
    return true;
}

bool ModuleLoader::IsInProcess(const std::filesystem::path& file) {
    void* handle = dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) {
        dlclose(handle);
    }
    return handle != nullptr;
}

} // namespace shell
