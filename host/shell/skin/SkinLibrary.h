// The skins of a folder with their pictures, fonts and texts, ready for use.
//
// The folder holds one `<anything>.skin` per resource, `texts.txt`, and the pictures as `images/<name>.png`; those of twice the size for
// finer screens are `images/<name>@2x.png`.
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
    explicit SkinImage(Surface pixels) : coarse(std::move(pixels)) {
        m_nWidth = coarse.Width();
        m_nHeight = coarse.Height();
    }
    // The picture for a surface of that scale, or the coarse one where there is no better. Every one has the same size in units.
    [[nodiscard]] const Surface& At(int scale) const { return fine && fine->Scale() == scale ? *fine : coarse; }

private:
    friend class SkinLibrary;
    const Surface coarse;          // one pixel for a unit
    std::unique_ptr<Surface> fine; // more than one
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

    // Has the pictures ready for surfaces of that scale. One that is missing in it, or of another size, is drawn from the coarse one.
    void SetScale(int scale);
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
