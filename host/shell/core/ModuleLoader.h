// Loads plug-in modules. A module announces its classes while it is loaded and withdraws them while it is unloaded.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace shell {

class ModuleLoader {
public:
    ModuleLoader() = default;
    ~ModuleLoader();
    ModuleLoader(const ModuleLoader&) = delete;
    ModuleLoader& operator=(const ModuleLoader&) = delete;

    // Loads a module; one that is loaded already is left alone. Returns an empty text, or the module's name and the loader's
    // reason.
    [[nodiscard]] std::string Load(const std::filesystem::path& file);
    // False when the module is not loaded.
    bool Unload(const std::filesystem::path& file);
    void UnloadAll();
    // Is the library still in the process? Something may hold it although it was unloaded.
    [[nodiscard]] static bool IsInProcess(const std::filesystem::path& file);

private:
    std::map<std::filesystem::path, void*> handles;
};

} // namespace shell
