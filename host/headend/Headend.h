// The transmitter's door: a description in, ETI(NI) out, one file for each block.
#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

#include "host/headend/Description.h"
#include "host/wire/Bytes.h"

namespace headend {

// How far it is, 0 (once, at the beginning) to 1, and what has just been finished. Called from working threads, one call at a time.
using Progress = std::function<void(double share, const std::string& what)>;

struct BuiltEnsemble {
    std::string block;
    wire::ByteVector eti; // frames of 6144 bytes
};

struct Broadcast {
    std::vector<BuiltEnsemble> ensembles;
    std::vector<std::string> warnings;
};

// Making was given up because somebody asked for it.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

// Makes everything, in as many threads as there are processors. The same description makes the same bytes. Throws
// DescriptionError or std::runtime_error; Interrupted soon after a stop is asked for.
[[nodiscard]] Broadcast MakeBroadcast(const Description& description, const Progress& progress = {},
                                      const std::stop_token& stop = {});

// Writes `<block>.eti` for each ensemble. Each file appears whole or not at all. Throws std::runtime_error.
void WriteBroadcast(const Broadcast& broadcast, const std::filesystem::path& directory);

} // namespace headend
