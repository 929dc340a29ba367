// dmbhead: makes broadcasts for testing, as ETI(NI) files.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "host/headend/Demo.h"
#include "host/headend/Headend.h"
#include "host/headend/Inspect.h"

namespace {

constexpr int kUsage = 2;

constexpr const char* kHelp = R"(dmbhead - the test transmitter: makes T-DMB and DAB broadcasts as ETI(NI) files

  dmbhead demo --out DIR [--again]   the built-in demo: three blocks, three television and four radio services
  dmbhead demo --print               its description, to begin one's own with
  dmbhead make FILE.json --out DIR   a broadcast after a description; writes DIR/<block>.eti for each ensemble
  dmbhead parts FILE.json|demo --out DIR
                                     what goes in: each television service's transport stream (.ts), a picture of it
                                     every five seconds (.png), each radio service's slides (.jpg) and texts (.txt)
  dmbhead --help | --version

Options
  --out DIR    where the files go; made when it is not there
  --again      make the demo although it is there already
  --quiet      say nothing but errors

docs/headend.md tells every field of a description. Exit status: 0 done, 1 failed, 2 the command line or the description
is wrong; then standard error tells file, place and reason.
)";

struct Options {
    std::vector<std::string> words;
    std::filesystem::path out;
    bool print = false;
    bool again = false;
    bool quiet = false;
};

int Usage(const std::string& reason) {
    std::cerr << "dmbhead: " << reason << "\nTry dmbhead --help.\n";
    return kUsage;
}

headend::Progress MakeProgress(bool quiet) {
    if (quiet)
        return {};
    return [](double share, const std::string& what) {
        std::printf("%3.0f %%  %s\n", share * 100, what.c_str());
        std::fflush(stdout);
    };
}

int Demo(const Options& options) {
    if (options.print) {
        std::cout << headend::DemoDescription();
        return 0;
    }
    if (options.out.empty())
        return Usage("demo needs --out DIR or --print");
    if (options.again)
        std::filesystem::remove(options.out / "recipe.txt");
    headend::EnsureBroadcast(headend::DemoDescription(), headend::DemoRecipe(), options.out,
                             MakeProgress(options.quiet));
    if (!options.quiet)
        std::cout << options.out.string() << "\n";
    return 0;
}

headend::Description Load(const std::string& name) {
    return name == "demo" ? headend::ParseDescription(headend::DemoDescription(), "built-in demo", {})
                          : headend::LoadDescription(name);
}

int Make(const Options& options) {
    if (options.words.size() != 2 || options.out.empty())
        return Usage("make needs FILE.json and --out DIR");
    const headend::Broadcast broadcast = headend::MakeBroadcast(Load(options.words[1]), MakeProgress(options.quiet));
    headend::WriteBroadcast(broadcast, options.out);
    for (const std::string& warning : broadcast.warnings)
        std::cerr << "dmbhead: " << warning << "\n";
    if (!options.quiet) {
        for (const auto& ensemble : broadcast.ensembles)
            std::cout << (options.out / (ensemble.block + ".eti")).string() << "\n";
    }
    return 0;
}

int Parts(const Options& options) {
    if (options.words.size() != 2 || options.out.empty())
        return Usage("parts needs FILE.json or demo, and --out DIR");
    for (const auto& file : headend::WriteParts(Load(options.words[1]), options.out)) {
        if (!options.quiet)
            std::cout << file.string() << "\n";
    }
    return 0;
}

int Run(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--help" || word == "-h") {
            std::cout << kHelp;
            return 0;
        }
        if (word == "--version") {
            std::cout << "dmbhead " DMB_VERSION "\n";
            return 0;
        }
        if (word == "--out") {
            if (++i == arguments.size())
                return Usage("--out needs a directory");
            options.out = arguments[i];
        } else if (word == "--print") {
            options.print = true;
        } else if (word == "--again") {
            options.again = true;
        } else if (word == "--quiet") {
            options.quiet = true;
        } else if (!word.empty() && word[0] == '-') {
            return Usage(word + ": no such option");
        } else {
            options.words.push_back(word);
        }
    }
    if (options.words.empty())
        return Usage("what is to be done?");
    if (options.words[0] == "demo" && options.words.size() == 1)
        return Demo(options);
    if (options.words[0] == "make")
        return Make(options);
    if (options.words[0] == "parts")
        return Parts(options);
    return Usage(options.words.back() + ": not understood");
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run({argv + 1, argv + argc});
    } catch (const headend::DescriptionError& error) {
        std::cerr << "dmbhead: " << error.what() << "\n";
        return kUsage;
    } catch (const std::exception& error) {
        std::cerr << "dmbhead: " << error.what() << "\n";
        return 1;
    }
}
