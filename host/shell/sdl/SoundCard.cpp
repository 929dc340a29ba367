#include "host/shell/sdl/SoundCard.h"

#include <SDL.h>

#include <cstring>
#include <utility>

namespace shell::sdl {

namespace {

constexpr int kRate = 48000;
constexpr int kChannels = 2;
constexpr Uint16 kBlock = 1024; // frames a pull: 21 ms

} // namespace

SoundCard::SoundCard(Say sayLine) : say(std::move(sayLine)) {
    initialised = SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
}

SoundCard::~SoundCard() {
    Stop();
    if (initialised) {
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }
}

void SoundCard::OnPull(void* self, std::uint8_t* bytes, int count) {
    const std::size_t samples = static_cast<std::size_t>(count) / sizeof(std::int16_t);
    auto* card = static_cast<SoundCard*>(self);
    // A card that was pulled out still asks for sound, and nobody hears it.
    if (SDL_GetAudioDeviceStatus(card->device) == SDL_AUDIO_STOPPED) {
        std::memset(bytes, 0, static_cast<std::size_t>(count));
        return;
    }
    card->pull({reinterpret_cast<std::int16_t*>(bytes), samples});
}

bool SoundCard::Start(Pull newPull) {
    Stop();
    SDL_AudioSpec wanted = {};
    wanted.freq = kRate;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = kChannels;
    wanted.samples = kBlock;
    wanted.callback = OnPull;
    wanted.userdata = this;
    SDL_AudioSpec got = {};
    // Whoever looks for a card again and again does so in silence: trying to open none is told of by some systems each time.
    if (failed && initialised && SDL_GetNumAudioDevices(0) == 0) {
        return false;
    }
    pull = std::move(newPull);
    device = initialised ? SDL_OpenAudioDevice(nullptr, 0, &wanted, &got, SDL_AUDIO_ALLOW_SAMPLES_CHANGE) : 0;
    if (device == 0) {
        if (!std::exchange(failed, true)) {
            say(std::string("no sound card, so nothing will be heard: ") + SDL_GetError());
        }
        return false;
    }
    if (std::exchange(failed, false)) {
        say("there is a sound card again");
    }
    // One block is being heard while the next one waits.
    latencyMs = 2 * got.samples * 1000 / kRate;
    SDL_PauseAudioDevice(device, 0);
    return true;
}

void SoundCard::Stop() {
    if (device != 0) {
        SDL_CloseAudioDevice(device); // the callback reads it until then
        device = 0;
    }
    pull = nullptr;
}

} // namespace shell::sdl
