// dmbtv scan SOURCE: the scan of the button, told on the standard output. It leaves the channel list that the viewer uses.
#include <algorithm>
#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "host/app/dmbtv/Interrupts.h"
#include "host/app/dmbtv/QuitPort.h"
#include "host/app/dmbtv/ScriptRunner.h"
#include "host/app/dmbtv/Session.h"
#include "host/app/dmbtv/ViewLook.h"
#include "host/app/dmbtv/commands/Command.h"
#include "host/ce/Text.h"
#include "host/medmb/BlockTable.h"
#include "tuner/ChannelTable.h"
#include "view/DMBViewIds.h"

namespace dmbtv {

namespace {

using Json = nlohmann::ordered_json;

const char* StateName(medmb::BlockState state) {
    switch (state) {
    case medmb::BlockState::Ok:
        return "ok";
    case medmb::BlockState::NoSync:
        return "no sync";
    case medmb::BlockState::NoServices:
        return "no services";
    case medmb::BlockState::NoSource:
    case medmb::BlockState::Cancelled:
        break;
    }
    return "no source";
}

Json ServicesOf(const medmb::Ensemble& ensemble) {
    Json services = Json::array();
    for (const medmb::Service& service : ensemble.services) {
        const int type = service.LibraryType();
        Json kind; // null: a service that the viewer does not list
        if (type == DMB_SERVICE_TYPE_DMB_VIDEO)
            kind = static_cast<int>(kKindDMB);
        else if (type == DMB_SERVICE_TYPE_DAB_AUDIO)
            kind = static_cast<int>(kKindDAB);
        services.push_back({{"label", service.label ? service.label->Utf8() : std::string()},
                            {"service_id", service.id},
                            {"type", type},
                            {"kind", kind}});
    }
    return services;
}

Json Tell(const std::vector<medmb::BlockReport>& reports, int channels) {
    Json blocks = Json::array();
    for (int row = 0; row < kChannelTableRows; ++row) {
        const ChannelTableRow& place = ChannelTable[row];
        const auto report = std::find_if(reports.begin(), reports.end(), [&](const medmb::BlockReport& r) {
            return r.frequency == static_cast<int>(place.frequency);
        });
        const bool known = report != reports.end();
        const bool received = known && report->state == medmb::BlockState::Ok;
        Json ensemble;
        if (received)
            ensemble = {{"id", report->ensemble.id},
                        {"label", report->ensemble.label ? report->ensemble.label->Utf8() : std::string()}};
        blocks.push_back({{"row", row},
                          {"channel", ce::ToUtf8(place.name)},
                          {"block", medmb::BlockName(row)},
                          {"frequency", place.frequency},
                          {"state", known ? StateName(report->state) : "no source"},
                          {"ensemble", ensemble},
                          {"services", received ? ServicesOf(report->ensemble) : Json::array()}});
    }
    return {{"blocks", blocks}, {"channels", channels}};
}

void PrintTable(const Json& told) {
    for (const Json& block : told.at("blocks")) {
        const Json& ensemble = block.at("ensemble");
        std::printf("%-4s %9d Hz  %s%s\n", block.at("block").get<std::string>().c_str(),
                    block.at("frequency").get<int>(), block.at("state").get<std::string>().c_str(),
                    ensemble.is_null() ? "" : ("  " + ensemble.at("label").get<std::string>()).c_str());
        for (const Json& service : block.at("services")) {
            const Json& kind = service.at("kind");
            std::printf("       %08X  %-5s  %s\n", service.at("service_id").get<unsigned>(),
                        kind.is_null()                ? "other"
                        : kind.get<int>() == kKindDMB ? "tv"
                                                      : "radio",
                        service.at("label").get<std::string>().c_str());
        }
    }
    std::printf("%d channels\n", told.at("channels").get<int>());
}

// Was the list stored? The module says nothing when it could not.
bool ListIsStored(const Options& options, int channels) {
    std::error_code error;
    const auto size = std::filesystem::file_size(options.profile / ce::ToUtf8(kChannelListFileName), error);
    return !error && size == static_cast<std::uintmax_t>(channels) * kChannelRecordBytes;
}

int Scan(const Options& options, bool json) {
    try {
        QuitPort quit;
        const Interrupts interrupts([&quit] { quit.Request(); });
        Session session(options, {nullptr, nullptr, {}, quit.Token()});
        const QuitPort::Joined joined(quit, session);
        shell::Shell& shell = session.Shell();
        const auto& view = static_cast<const CVelDMBView&>(session.OpenView());
        CancelUnanswered(shell); // the list that the scan opens at its end
        if (!shell.Press(kElementScan))
            return Fail(kExitFailed, "the scan cannot be started");
        shell.RunUntilIdle();
        if (interrupts.Came())
            return kExitInterrupted;
        const int channels = DMBViewPeer::ChannelCount(view);
        const Json told = Tell(session.Receiver().Reports(), channels);
        if (json)
            std::puts(told.dump(2).c_str());
        else
            PrintTable(told);
        if (!ListIsStored(options, channels))
            return Fail(kExitFailed, "the channel list could not be written to " + options.profile.string());
        return kExitDone;
    } catch (const StartFailure& failure) {
        return Fail(failure.status, failure.what());
    }
}

} // namespace

void AddScan(CLI::App& app, Request& request) {
    CLI::App* command = app.add_subcommand("scan", "look for services on all blocks and keep the channel list");
    command->fallthrough();
    command->footer(kExitStatusHelp);
    AddSourceOptions(*command, request.options);
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "one JSON document instead of a table");
    command->callback([&request, json] { request.task = [&request, json] { return Scan(request.options, *json); }; });
}

} // namespace dmbtv
