// dmbtv list: the stored channels and the recordings on the card, without receiving anything.
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "graph/RecordName.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/commands/Channels.h"
#include "host/app/dmbtv/commands/Command.h"
#include "host/ce/Text.h"
#include "host/filters/Recording.h"
#include "host/shell/core/FileDetails.h"
#include "view/DMBView.h"

namespace dmbtv {

namespace {

using Json = nlohmann::ordered_json;

std::string WhenOf(TimeSeconds moment) {
    const auto seconds = static_cast<std::time_t>(moment);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return {text, length};
}

Json ChannelsAsJson(const CVelDMBView& view) {
    Json channels = Json::array();
    for (const KnownChannel& known : ChannelsOf(view))
        channels.push_back({{"position", known.position},
                            {"label", known.label},
                            {"channel", known.channel},
                            {"frequency", known.record.frequency},
                            {"service_id", known.record.serviceId},
                            {"kind", known.record.kind}});
    return channels;
}

// What the view would play.
Json RecordingsAsJson(CVelDMBView& view, ce::DeviceFiles& files) {
    Json recordings = Json::array();
    const WString folder = WString(kCardFolder) + kRecordFolder;
    const auto entries = files.List(folder.c_str());
    if (!entries)
        return recordings;
    for (const ce::FolderEntry& entry : *entries) {
        const WString path = folder + entry.name;
        if (entry.isFolder || view.AllowFileList(path.c_str()) == 0)
            continue;
        const auto seconds = filters::PlayingSeconds(path.c_str());
        recordings.push_back({{"name", ce::ToUtf8(entry.name)},
                              {"bytes", entry.size},
                              {"seconds", seconds ? Json(*seconds) : Json()},
                              {"modified", WhenOf(entry.modified)}});
    }
    return recordings;
}

void Print(const Json& told) {
    for (const Json& channel : told.at("channels"))
        std::printf("%-5s  %-6s  %s\n", KindName(channel.at("kind").get<LONG>()),
                    channel.at("channel").get<std::string>().c_str(), channel.at("label").get<std::string>().c_str());
    for (const Json& recording : told.at("recordings")) {
        const Json& seconds = recording.at("seconds");
        const WString length = shell::LengthText(recording.at("bytes").get<ULONGLONG>(),
                                                 seconds.is_null() ? std::nullopt : std::optional(seconds.get<UINT>()));
        std::printf("file   %s  %9s  %s\n", recording.at("modified").get<std::string>().c_str(),
                    ce::ToUtf8(length).c_str(), recording.at("name").get<std::string>().c_str());
    }
}

int List(Options options, bool json) {
    try {
        options.noBroadcast = true;
        Session session(options, {});
        auto& view = static_cast<CVelDMBView&>(session.OpenView());
        const Json told = {{"channels", ChannelsAsJson(view)},
                           {"recordings", RecordingsAsJson(view, session.System().files())}};
        if (told.at("channels").empty())
            Log(LogLevel::Warn, "there is no channel list yet; dmbtv scan makes one");
        if (json)
            std::puts(told.dump(2).c_str());
        else
            Print(told);
        return kExitDone;
    } catch (const StartFailure& failure) {
        return Fail(failure.status, failure.what());
    }
}

} // namespace

void AddList(CLI::App& app, Request& request) {
    CLI::App* command = app.add_subcommand("list", "show the stored channels and the recordings");
    command->fallthrough();
    command->footer(kExitStatusHelp);
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "one JSON document instead of a table");
    command->callback([&request, json] { request.task = [&request, json] { return List(request.options, *json); }; });
}

} // namespace dmbtv
