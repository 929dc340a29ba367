// dmbprobe play: decodes a recording, as fast as possible.
#include <array>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/WavFile.h"
#include "host/filters/Demultiplexer.h"
#include "host/filters/PictureDecoder.h"
#include "host/filters/SoundDecoder.h"
#include "host/filters/av/Resampler.h"

namespace dmbprobe {

namespace {

struct PlayOptions {
    std::string input;
    std::string audio;
    std::string video;
};

// The chain from access units to the two files. The sound file has the format of the first sound; another one later is
// converted to stereo of the same rate.
class Player final : public filters::DemuxListener {
public:
    explicit Player(const PlayOptions& options) : options_(options) {
        if (!options.video.empty())
            video_.open(options.video, std::ios::binary | std::ios::trunc);
    }

    void OnStreams(const filters::VideoFormat*, const filters::AudioFormat* audio) override {
        if (audio == nullptr || audio->sampleRate == 0 || *audio == audioFormat_)
            return;
        audioFormat_ = *audio;
        hasSound_ = sound_.SetFormat(*audio);
    }
    void OnVideo(filters::AccessUnit unit) override {
        pictures_.Push(unit, [this](const filters::Picture& picture) { Write(picture); });
    }
    void OnAudio(filters::AccessUnit unit) override {
        if (hasSound_)
            sound_.Push(unit, [this](const filters::SoundBlock& block) { Write(block); });
    }
    void OnClockLost() override {}

    // False when a file could not be written.
    bool Finish() {
        pictures_.Drain([this](const filters::Picture& picture) { Write(picture); });
        bool good = true;
        if (!options_.video.empty()) {
            video_.close();
            good = static_cast<bool>(video_);
        }
        if (!options_.audio.empty() && !wav_)
            wav_.emplace(options_.audio, 48000, 2); // a recording without sound
        if (wav_)
            good = wav_->Close() && good;
        return good;
    }
    [[nodiscard]] std::uint64_t Pictures() const { return pictureCount_; }
    [[nodiscard]] std::uint64_t Blocks() const { return blockCount_; }
    [[nodiscard]] std::uint64_t Concealed() const { return concealed_; }

private:
    void Write(const filters::Picture& picture) {
        ++pictureCount_;
        if (!options_.video.empty())
            video_.write(reinterpret_cast<const char*>(picture.i420.data()),
                         static_cast<std::streamsize>(picture.i420.size()));
    }
    void Write(const filters::SoundBlock& block) {
        ++blockCount_;
        concealed_ += block.concealed ? 1 : 0;
        if (options_.audio.empty())
            return;
        if (!wav_) {
            wav_.emplace(options_.audio, static_cast<unsigned>(block.sampleRate),
                         static_cast<unsigned>(block.channels));
            rate_ = block.sampleRate;
            channels_ = block.channels;
        }
        if (block.sampleRate == rate_ && block.channels == channels_) {
            wav_->Write(block.samples);
            return;
        }
        if (!resampler_)
            resampler_.emplace(rate_);
        std::vector<std::int16_t> stereo;
        resampler_->Push(block.samples, block.sampleRate, block.channels, stereo);
        if (channels_ == 1) {
            for (std::size_t i = 0; i < stereo.size() / 2; ++i)
                stereo[i] = static_cast<std::int16_t>((stereo[2 * i] + stereo[2 * i + 1]) / 2);
            stereo.resize(stereo.size() / 2);
        }
        wav_->Write(stereo);
    }

    const PlayOptions& options_;
    filters::PictureDecoder pictures_;
    filters::SoundDecoder sound_;
    filters::AudioFormat audioFormat_;
    bool hasSound_ = false;
    std::ofstream video_;
    std::optional<WavFile> wav_;
    std::optional<filters::Resampler> resampler_;
    int rate_ = 0;
    int channels_ = 0;
    std::uint64_t pictureCount_ = 0;
    std::uint64_t blockCount_ = 0;
    std::uint64_t concealed_ = 0;
};

int Play(const PlayOptions& options) {
    std::ifstream input(options.input, std::ios::binary);
    if (!input) {
        std::cerr << "dmbprobe play: cannot open " << options.input << '\n';
        return kNoInput;
    }
    Player player(options);
    filters::Demultiplexer demultiplexer(player);
    filters::PacketSync sync;
    const auto push = [&](filters::ByteSpan packet) { demultiplexer.Push(packet); };
    std::array<std::uint8_t, 64 * 1024> buffer{};
    while (input) {
        input.read(reinterpret_cast<char*>(buffer.data()), buffer.size());
        sync.Push(filters::ByteSpan(buffer).first(static_cast<std::size_t>(input.gcount())), push);
    }
    sync.Finish(push);
    demultiplexer.Finish();
    const filters::DemuxCounters& counters = demultiplexer.Counters();
    if (!player.Finish()) {
        std::cerr << "dmbprobe play: cannot write the output\n";
        return kFailed;
    }
    std::cerr << "dmbprobe play: " << counters.packets << " packets (" << counters.damagedPackets << " damaged, "
              << counters.scrambledPackets << " scrambled, " << counters.gaps << " gaps), " << counters.videoUnits
              << " picture units, " << counters.audioUnits << " sound units; " << player.Pictures() << " pictures, "
              << player.Blocks() << " sound blocks (" << player.Concealed() << " replaced)\n";
    if (demultiplexer.Streams() == nullptr) {
        std::cerr << "dmbprobe play: no programme in " << options.input << '\n';
        return kNoService;
    }
    return kDone;
}

} // namespace

void AddPlay(CLI::App& app, int& status) {
    auto options = std::make_shared<PlayOptions>();
    CLI::App* command = app.add_subcommand("play", "Decodes a recording of television as fast as possible");
    command->add_option("FILE.dmb", options->input, "Transport stream packets of 188 or 204 bytes")->required();
    command->add_option("--audio", options->audio, "WAV file for the sound, from the first sample of the first unit");
    command->add_option("--video", options->video, "File for the pictures, I420, one after another");
    command->callback([options, &status] { status = Play(*options); });
}

} // namespace dmbprobe
