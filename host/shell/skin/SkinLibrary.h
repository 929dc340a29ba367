// The skins of a folder with their pictures, fonts and texts, ready for use.
//
// The folder holds one `<anything>.skin` per resource, `texts.txt`, and the pictures as `images/<name>.png`; those of twice the
// size for finer screens are `images/<name>@2x.png`.
#pragma once

#include "host/shell/gdi/Context.h"
#include "host/shell/skin/MessageTexts.h"
#include "host/shell/skin/SkinDescription.h"
#include "platform/velshell/GEngine.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace shell {

class SkinImage final : public GImage {
public:
    // `file` is where the picture came from; finer ones lie beside it.
    SkinImage(Surface pixels, std::filesystem::path file) : coarse(std::move(pixels)), coarseFile(std::move(file)) {
        m_nWidth = coarse.Width();
        m_nHeight = coarse.Height();
    }
    // The picture for a surface of that scale, read when it is first asked for, or the coarse one where there is no better. Every one
    // has the same size in units. Valid until the next call with another scale.
    [[nodiscard]] const Surface& At(int scale) const;
    // Keeps the coarse one only.
    void DropFine();

private:
    const Surface coarse; // one pixel for a unit
    const std::filesystem::path coarseFile;
    mutable std::unique_ptr<Surface> fine; // more than one; null: none has been found
    mutable int soughtScale = 1;           // the last that was looked for
};

class SkinImageSet final : public GImageSet {
public:
    explicit SkinImageSet(std::vector<const SkinImage*> pictures);
    ~SkinImageSet();
};

// One resource. Lives as long as its library; elements point into it.
struct Skin {
    SkinDescription description;
    const SkinImage* background = nullptr;
    std::map<std::string, HFONT> fonts;
    std::map<UINT, std::unique_ptr<SkinImageSet>> imageSets; // by element
};

class SkinLibrary {
public:
    // Loads everything. Throws SkinError: file, line and reason.
    SkinLibrary(const std::filesystem::path& folder, GdiState& gdi);
    ~SkinLibrary();
    SkinLibrary(const SkinLibrary&) = delete;
    SkinLibrary& operator=(const SkinLibrary&) = delete;

    // Gives back the room of the pictures of twice the size; those that are drawn again are read again.
    void DropFine();
    // The skin of a resource, or null.
    [[nodiscard]] const Skin* Find(WStringView resource) const;
    // A picture that a loaded skin names, or null for an empty name.
    [[nodiscard]] const SkinImage* Picture(const std::string& name) const;
    // A numbered bitmap of any skin, or null.
    [[nodiscard]] const SkinImage* Bitmap(UINT number) const;
    // A message text, or an empty one. Valid as long as the library.
    [[nodiscard]] const WCHAR* Text(WStringView resource, WORD number, Language language) const;

private:
    void LoadSkin(const std::filesystem::path& file);
    const SkinImage* LoadPicture(const SkinDescription& skin, int line, const std::string& name);

    std::filesystem::path folder;
    GdiState& gdi;
    std::map<std::string, std::unique_ptr<SkinImage>> pictures;
    std::map<WString, std::unique_ptr<Skin>, std::less<>> skins;
    std::map<UINT, const SkinImage*> bitmaps;
    std::map<WString, std::map<WORD, std::array<WString, kLanguageCount>>, std::less<>> texts;
};

} // namespace shell
