#include "host/shell/skin/SkinLibrary.h"

#include "host/ce/Text.h"
#include "host/shell/skin/SkinError.h"

#include <algorithm>
#include <fstream>
#include <iterator>

struct GImageSet::Impl {
    std::vector<const shell::SkinImage*> pictures;
};

int GImageSet::GetCount() const {
    return static_cast<int>(m_pImpl->pictures.size());
}

const GImage* GImageSet::GetImage(int index) const {
    return index >= 0 && index < GetCount() ? m_pImpl->pictures[static_cast<std::size_t>(index)] : nullptr;
}

namespace shell {

namespace {

std::string ReadWhole(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(in), {}};
    if (!in.good() && !in.eof()) {
        throw SkinError(file.string(), 0, "cannot be read");
    }
    return content;
}

} // namespace

SkinImageSet::SkinImageSet(std::vector<const SkinImage*> pictures) {
    m_pImpl = new Impl{std::move(pictures)};
}

SkinImageSet::~SkinImageSet() {
    delete m_pImpl;
}

const Surface& SkinImage::At(int scale) const {
    if (scale == 1) {
        return coarse;
    }
    if (scale != soughtScale) {
        soughtScale = scale;
        fine.reset();
        const std::string name = coarseFile.stem().string() + "@" + std::to_string(scale) + "x.png";
        auto read = Surface::ReadPng(coarseFile.parent_path() / name, scale);
        if (read && read->Width() == coarse.Width() && read->Height() == coarse.Height()) {
            fine = std::make_unique<Surface>(std::move(*read));
        }
    }
    return fine ? *fine : coarse;
}

void SkinImage::DropFine() {
    fine.reset();
    soughtScale = 1;
}

SkinLibrary::SkinLibrary(const std::filesystem::path& skinFolder, GdiState& gdiState)
    : folder(skinFolder), gdi(gdiState) {
    std::error_code error;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".skin") {
            files.push_back(entry.path());
        }
    }
    if (files.empty()) {
        throw SkinError(folder.string(), 0, error ? error.message() : "holds no .skin file");
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        LoadSkin(file);
    }
    const std::filesystem::path textFile = folder / "texts.txt";
    for (const auto& [resource, table] : ReadMessageTexts(textFile.string(), ReadWhole(textFile))) {
        for (const auto& [number, text] : table) {
            texts[ce::FromUtf8(resource)][number] = {ce::FromUtf8(text[0]), ce::FromUtf8(text[1])};
        }
    }
}

SkinLibrary::~SkinLibrary() {
    for (const auto& [name, skin] : skins) {
        for (const auto& [fontName, font] : skin->fonts) {
            gdi.RemoveStock(font);
        }
    }
}

void SkinLibrary::LoadSkin(const std::filesystem::path& file) {
    auto skin = std::make_unique<Skin>();
    skin->description = ReadSkinDescription(file.string(), ReadWhole(file));
    const SkinDescription& description = skin->description;
    const WString resource = ce::FromUtf8(description.resource);
    if (skins.find(resource) != skins.end()) {
        throw SkinError(description.file, 0, "resource '" + description.resource + "' has another file already");
    }
    skin->background = LoadPicture(description, 0, description.background);
    for (const auto& [number, name] : description.bitmaps) {
        bitmaps[number] = LoadPicture(description, 0, name);
    }
    for (const ElementDescription& element : description.elements) {
        for (const FaceDescription& face : element.faces) {
            LoadPicture(description, element.line, face.icon);
            for (const std::string& name : face.images) {
                LoadPicture(description, element.line, name);
            }
        }
        std::vector<const SkinImage*> set;
        for (const std::string& name : element.imageSet) {
            set.push_back(LoadPicture(description, element.line, name));
        }
        if (!set.empty()) {
            skin->imageSets[element.id] = std::make_unique<SkinImageSet>(std::move(set));
        }
    }
    for (const auto& [name, font] : description.fonts) {
        skin->fonts[name] = gdi.AddFont({font.family, font.pixels, font.bold}, true);
    }
    skins.emplace(resource, std::move(skin));
}

const SkinImage* SkinLibrary::LoadPicture(const SkinDescription& skin, int line, const std::string& name) {
    if (name.empty() || pictures.find(name) != pictures.end()) {
        return Picture(name);
    }
    const std::filesystem::path file = folder / "images" / (name + ".png");
    auto surface = Surface::ReadPng(file);
    if (!surface) {
        throw SkinError(skin.file, line, "the picture '" + name + "' is missing or no PNG picture");
    }
    return pictures.emplace(name, std::make_unique<SkinImage>(std::move(*surface), file)).first->second.get();
}

void SkinLibrary::DropFine() {
    for (const auto& [name, picture] : pictures) {
        picture->DropFine();
    }
}

const Skin* SkinLibrary::Find(WStringView resource) const {
    const auto found = skins.find(resource);
    return found == skins.end() ? nullptr : found->second.get();
}

const SkinImage* SkinLibrary::Picture(const std::string& name) const {
    const auto found = pictures.find(name);
    return found == pictures.end() ? nullptr : found->second.get();
}

const SkinImage* SkinLibrary::Bitmap(UINT number) const {
    const auto found = bitmaps.find(number);
    return found == bitmaps.end() ? nullptr : found->second;
}

const WCHAR* SkinLibrary::Text(WStringView resource, WORD number, Language language) const {
    const auto table = texts.find(resource);
    if (table == texts.end()) {
        return u"";
    }
    const auto text = table->second.find(number);
    return text == table->second.end() ? u"" : text->second[static_cast<std::size_t>(language)].c_str();
}

} // namespace shell
