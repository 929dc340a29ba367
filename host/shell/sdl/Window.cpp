#include "host/shell/sdl/Window.h"

#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace shell::sdl {

namespace {

constexpr int kPointerHides = 3000; // ms without a movement
constexpr int kSmallestWidth = 400, kSmallestHeight = 240;

[[noreturn]] void Refuse(const std::string& what) {
    throw WindowError(what + ": " + SDL_GetError());
}

SDL_Rect RectOf(const Box& box) {
    return {box.x, box.y, box.width, box.height};
}

// OpenGL that the processor itself plays is slower than drawing with the processor directly.
bool IsPlayedByProcessor(SDL_Renderer* renderer) {
    SDL_RendererInfo info = {};
    if (SDL_GetRendererInfo(renderer, &info) != 0 || std::strncmp(info.name, "opengl", 6) != 0) {
        return false;
    }
    using GetString = const unsigned char* (*)(unsigned);
    constexpr unsigned kRendererName = 0x1F01; // GL_RENDERER
    auto getString = reinterpret_cast<GetString>(SDL_GL_GetProcAddress("glGetString"));
    const unsigned char* text = getString != nullptr ? getString(kRendererName) : nullptr;
    const std::string name = text != nullptr ? reinterpret_cast<const char*>(text) : "";
    constexpr const char* kProcessor[] = {"llvmpipe", "softpipe", "swrast", "SwiftShader"};
    return std::any_of(std::begin(kProcessor), std::end(kProcessor),
                       [&name](const char* part) { return name.find(part) != std::string::npos; });
}

// Without one, asking for OpenGL would only load a large library that draws with the processor.
bool HasGraphicsCard() {
    std::error_code error;
    return std::filesystem::exists("/dev/dri", error) || std::filesystem::exists("/dev/nvidiactl", error);
}

SDL_Renderer* MakeRenderer(SDL_Window* window) {
    const bool chosen = SDL_GetHint(SDL_HINT_RENDER_DRIVER) != nullptr;
    SDL_Renderer* renderer = nullptr;
    if (chosen || HasGraphicsCard()) {
        renderer = SDL_CreateRenderer(window, -1, SDL_RENDERER_ACCELERATED | SDL_RENDERER_PRESENTVSYNC);
    }
    if (renderer != nullptr && !chosen && IsPlayedByProcessor(renderer)) {
        SDL_DestroyRenderer(std::exchange(renderer, nullptr));
    }
    if (renderer == nullptr) {
        SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION,
                    "0"); // else the window's surface would go through OpenGL all the same
        renderer = SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE);
    }
    return renderer;
}

// Rows of pixels that are not wholly transparent, as runs.
std::vector<Box> VisibleBands(const Frame& frame) {
    std::vector<Box> bands;
    const int width = kScreenWidth * frame.scale;
    for (int y = 0; y < kScreenHeight * frame.scale; ++y) {
        const auto row = frame.pixels.begin() + static_cast<std::ptrdiff_t>(y) * width;
        if (std::all_of(row, row + width, [](std::uint32_t pixel) { return pixel >> 24 == 0; })) {
            continue;
        }
        if (!bands.empty() && bands.back().y + bands.back().height == y) {
            ++bands.back().height;
        } else {
            bands.push_back({0, y, width, 1});
        }
    }
    return bands;
}

} // namespace

struct Window::Impl {
    Impl(KeyMap map, Frames& framesToShow, Inputs& inputsToFill)
        : keys(std::move(map)), frames(framesToShow), inputs(inputsToFill) {}
    ~Impl();

    void Open(const std::string& title, bool fullScreen);
    void MakeOverlay(int scale);
    void Handle(const SDL_Event& event);
    void HandleWindow(const SDL_WindowEvent& event);
    void HandleKey(const SDL_KeyboardEvent& event);
    [[nodiscard]] Point PlaceOf(int x, int y) const;
    void Touch(Input::Kind kind, int x, int y);
    void ToggleFullScreen();
    void Close();
    void TakeNews();
    void TakeFrame();
    void HidePointerInTime();
    void Present();
    bool UpdatePicture();

    KeyMap keys;
    Frames& frames;
    Inputs& inputs;
    std::function<void()> onClose;
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    SDL_Texture* overlay = nullptr;
    int overlayScale = 0;
    int wantedScale = 1; // the shell has been told
    SDL_Texture* video = nullptr;
    int videoWidth = 0, videoHeight = 0;
    std::shared_ptr<const Picture> uploaded; // what `video` holds
    std::vector<Box> bands;                  // of the overlay, in its pixels
    Frames::News news;
    std::string title;
    Uint32 newsEvent = 0;
    std::atomic<bool> newsPosted = false;
    bool pressed = false;
    bool closing = false;
    bool dirty = true;
    Uint64 pointerMoved = 0;
    bool pointerShown = true;
};

Window::Impl::~Impl() {
    frames.SetListener({});
    if (video != nullptr) {
        SDL_DestroyTexture(video);
    }
    if (overlay != nullptr) {
        SDL_DestroyTexture(overlay);
    }
    if (renderer != nullptr) {
        SDL_DestroyRenderer(renderer);
    }
    if (window != nullptr) {
        SDL_DestroyWindow(window);
    }
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

void Window::Impl::Open(const std::string& firstTitle, bool fullScreen) {
    title = firstTitle;
    Uint32 flags = SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI;
    if (fullScreen) {
        flags |= SDL_WINDOW_FULLSCREEN_DESKTOP;
    }
    window = SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, kScreenWidth,
                              kScreenHeight, flags);
    if (window == nullptr) {
        Refuse("no window can be opened");
    }
    SDL_SetWindowMinimumSize(window, kSmallestWidth, kSmallestHeight);
    renderer = MakeRenderer(window);
    if (renderer == nullptr) {
        Refuse("nothing can be drawn in the window");
    }
    MakeOverlay(1);
    if (overlay == nullptr) {
        Refuse("nothing can be drawn in the window");
    }
    newsEvent = SDL_RegisterEvents(1);
    frames.SetListener([this] {
        if (!newsPosted.exchange(true)) {
            SDL_Event event = {};
            event.type = newsEvent;
            SDL_PushEvent(&event);
        }
    });
    pointerMoved = SDL_GetTicks64();
}

// What the window shows of the skin, with so many pixels for one of the usual; null when there is no room for it.
void Window::Impl::MakeOverlay(int scale) {
    if (overlay != nullptr) {
        SDL_DestroyTexture(overlay);
    }
    overlayScale = scale;
    overlay = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, kScreenWidth * scale,
                                kScreenHeight * scale);
    if (overlay != nullptr) {
        SDL_SetTextureBlendMode(overlay, SDL_BLENDMODE_BLEND);
        SDL_SetTextureScaleMode(overlay, SDL_ScaleModeLinear);
    }
}

// ---- Input -----------------------------------------------------------------------------------------------------------

void Window::Impl::Handle(const SDL_Event& event) {
    if (event.type == newsEvent) {
        TakeNews();
        return;
    }
    switch (event.type) {
    case SDL_QUIT:
        Close();
        break;
    case SDL_WINDOWEVENT:
        HandleWindow(event.window);
        break;
    case SDL_RENDER_TARGETS_RESET:
    case SDL_RENDER_DEVICE_RESET:
        uploaded = nullptr;
        TakeFrame();
        break;
    case SDL_KEYDOWN:
        HandleKey(event.key);
        break;
    case SDL_MOUSEMOTION:
        pointerMoved = SDL_GetTicks64();
        if (pressed) {
            Touch(Input::Kind::TouchMove, event.motion.x, event.motion.y);
        }
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: // a finger comes as a mouse too
        pointerMoved = SDL_GetTicks64();
        if (event.button.button == SDL_BUTTON_LEFT && pressed != (event.type == SDL_MOUSEBUTTONDOWN)) {
            pressed = !pressed;
            Touch(pressed ? Input::Kind::TouchDown : Input::Kind::TouchUp, event.button.x, event.button.y);
        }
        break;
    case SDL_MOUSEWHEEL:
        if (event.wheel.y != 0) {
            inputs.Push(
                {Input::Kind::Wheel, PlaceOf(event.wheel.mouseX, event.wheel.mouseY), Action::None, event.wheel.y});
        }
        break;
    default:
        break;
    }
}

void Window::Impl::HandleWindow(const SDL_WindowEvent& event) {
    switch (event.event) {
    case SDL_WINDOWEVENT_CLOSE:
        Close();
        break;
    case SDL_WINDOWEVENT_EXPOSED:
    case SDL_WINDOWEVENT_SIZE_CHANGED:
    case SDL_WINDOWEVENT_SHOWN:
    case SDL_WINDOWEVENT_RESTORED:
        dirty = true;
        break;
    default:
        break;
    }
}

void Window::Impl::HandleKey(const SDL_KeyboardEvent& event) {
    const Action action = keys.Find(event.keysym.sym);
    // What is pressed together with Ctrl, Alt or the system key belongs to the desktop.
    if ((event.keysym.mod & (KMOD_CTRL | KMOD_ALT | KMOD_GUI)) != 0 || action == Action::None ||
        (event.repeat != 0 && !Repeats(action))) {
        return;
    }
    const bool leavesFullScreen = action == Action::Cancel && !(news.frame && news.frame->askedFor) &&
                                  (SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
    if (action == Action::FullScreen || leavesFullScreen) {
        ToggleFullScreen();
    } else if (action == Action::Leave) {
        Close();
    } else {
        inputs.Push({Input::Kind::Key, {}, action, 0});
    }
}

// A point of the window on the screen.
Point Window::Impl::PlaceOf(int x, int y) const {
    int width = 0;
    int height = 0;
    SDL_GetWindowSize(window, &width, &height);
    return ToScreen({x, y}, width, height);
}

void Window::Impl::Touch(Input::Kind kind, int x, int y) {
    inputs.Push({kind, PlaceOf(x, y), Action::None, 0});
}

void Window::Impl::ToggleFullScreen() {
    const bool full = (SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
    SDL_SetWindowFullscreen(window, full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
    dirty = true;
}

// The window goes at once; the shell behind it takes its time to end in order.
void Window::Impl::Close() {
    if (std::exchange(closing, true)) {
        return;
    }
    SDL_HideWindow(window);
    SDL_ShowCursor(SDL_ENABLE);
    onClose();
}

// ---- Frames ----------------------------------------------------------------------------------------------------------

void Window::Impl::TakeNews() {
    newsPosted = false;
    const std::shared_ptr<const Frame> before = news.frame;
    news = frames.Take();
    dirty = true;
    if (news.frame && news.frame != before) {
        TakeFrame();
    }
}

void Window::Impl::TakeFrame() {
    dirty = true;
    if (!news.frame) {
        return;
    }
    const Frame& frame = *news.frame;
    if (frame.scale != overlayScale) {
        MakeOverlay(frame.scale);
    }
    bands = VisibleBands(frame);
    SDL_UpdateTexture(overlay, nullptr, frame.pixels.data(), kScreenWidth * frame.scale * 4);
    if (frame.title != title) {
        title = frame.title;
        SDL_SetWindowTitle(window, title.c_str());
    }
    if (frame.keepAwake == (SDL_IsScreenSaverEnabled() == SDL_TRUE)) {
        frame.keepAwake ? SDL_DisableScreenSaver() : SDL_EnableScreenSaver();
    }
}

void Window::Impl::HidePointerInTime() {
    const bool rests = SDL_GetTicks64() - pointerMoved >= kPointerHides;
    const bool show = !(rests && news.frame && news.frame->keepAwake && !news.frame->askedFor) || closing;
    if (show != pointerShown) {
        pointerShown = show;
        SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
    }
}

// False when there is no picture.
bool Window::Impl::UpdatePicture() {
    const std::shared_ptr<const Picture>& picture = news.picture;
    if (!picture || picture->width < 1 || picture->height < 1) {
        return false;
    }
    if (picture == uploaded) {
        return true;
    }
    if (video == nullptr || videoWidth != picture->width || videoHeight != picture->height) {
        if (video != nullptr) {
            SDL_DestroyTexture(video);
        }
        video = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_IYUV, SDL_TEXTUREACCESS_STREAMING, picture->width,
                                  picture->height);
        if (video == nullptr) {
            return false;
        }
        SDL_SetTextureScaleMode(video, SDL_ScaleModeLinear);
        videoWidth = picture->width;
        videoHeight = picture->height;
    }
    const int chroma = (picture->width + 1) / 2;
    SDL_UpdateYUVTexture(video, nullptr, picture->luma, picture->width, picture->blue, chroma, picture->red, chroma);
    uploaded = picture;
    return true;
}

void Window::Impl::Present() {
    int width = 0;
    int height = 0;
    if (SDL_GetRendererOutputSize(renderer, &width, &height) != 0) {
        return;
    }
    if (const int scale = ScaleFor(width, height); scale != wantedScale) {
        wantedScale = scale;
        inputs.WantScale(scale); // until the shell has painted anew, the old picture is scaled
    }
    const Box screen = PlaceScreen(width, height);
    SDL_SetRenderDrawColor(renderer, 0, 0, 0, SDL_ALPHA_OPAQUE);
    SDL_RenderClear(renderer);
    if (news.frame) {
        const Frame& frame = *news.frame;
        if (frame.video && UpdatePicture()) {
            const Box place = ToOutput(frame.videoPlace, screen);
            const SDL_Rect target = RectOf(frame.keepAspect ? FitInside(place, news.picture->aspect) : place);
            SDL_RenderCopy(renderer, video, nullptr, &target);
        }
        for (const Box& band : bands) {
            const SDL_Rect source = RectOf(band);
            const SDL_Rect target = RectOf(ToOutput(band, screen, overlayScale));
            SDL_RenderCopy(renderer, overlay, &source, &target);
        }
    }
    SDL_RenderPresent(renderer);
    dirty = false;
}

// ---- The door --------------------------------------------------------------------------------------------------------

Window::Window(const std::string& title, bool fullScreen, KeyMap keys, Frames& frames, Inputs& inputs) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1"); // the program has its own
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "DMB View");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        Refuse("there is no display");
    }
    SDL_SetYUVConversionMode(SDL_YUV_CONVERSION_BT601);
    impl = std::make_unique<Impl>(std::move(keys), frames, inputs);
    impl->Open(title, fullScreen);
}

Window::~Window() = default;

void Window::Run(const std::function<void()>& onClose) {
    impl->onClose = onClose;
    impl->TakeNews();
    do { // what waits is handled also when the end has come meanwhile
        const bool pointerRests = impl->pointerShown && !impl->closing;
        const int patience = impl->news.ended ? 0 : pointerRests ? kPointerHides : -1;
        SDL_Event event;
        if (SDL_WaitEventTimeout(&event, patience) == 1) {
            do {
                impl->Handle(event);
            } while (SDL_PollEvent(&event) == 1);
        }
        impl->HidePointerInTime();
        if (impl->dirty && !impl->closing) {
            impl->Present();
        }
    } while (!impl->news.ended);
}

bool Window::IsFullScreen() const {
    return (SDL_GetWindowFlags(impl->window) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
}

std::string Window::RendererName() const {
    SDL_RendererInfo info = {};
    return SDL_GetRendererInfo(impl->renderer, &info) == 0 ? info.name : "";
}

} // namespace shell::sdl
