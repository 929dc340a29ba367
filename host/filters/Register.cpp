#include "host/filters/Register.h"

#include "host/filters/AudioRenderer.h"
#include "host/filters/DabSource.h"
#include "host/filters/ParserFilter.h"
#include "host/filters/SoundDecoderFilter.h"
#include "host/filters/VideoDecoderFilter.h"
#include "host/filters/VideoRenderer.h"

namespace filters {

void Register(dshow::ClassTable& table, ce::Clock& clock, const Outputs& outputs, medmb::Broadcast& broadcast) {
    table.Add(CLSID_DMBParser, [&clock, outputs, &broadcast](REFIID iid, void** object) {
        return dshow::CreateObject<ParserFilter>(iid, object, clock, outputs, broadcast);
    });
    table.Add(CLSID_BSACDecoder, [](REFIID iid, void** object) {
        return dshow::CreateObject<SoundDecoderFilter>(iid, object, CLSID_BSACDecoder, kSubtypeMpeg4Audio);
    });
    table.Add(CLSID_MP3Decoder, [](REFIID iid, void** object) {
        return dshow::CreateObject<SoundDecoderFilter>(iid, object, CLSID_MP3Decoder, kSubtypeLayerTwo);
    });
    table.Add(CLSID_DMBVideoDecoder,
              [](REFIID iid, void** object) { return dshow::CreateObject<VideoDecoderFilter>(iid, object); });
    // A registration plays one source.
    table.Add(CLSID_AudioRender, [&clock, outputs, hold = std::make_shared<LiveHold>()](REFIID iid, void** object) {
        return dshow::CreateObject<AudioRenderer>(iid, object, clock, outputs, hold);
    });
    table.Add(CLSID_DMBVideoRenderer, [&clock, outputs](REFIID iid, void** object) {
        return dshow::CreateObject<VideoRenderer>(iid, object, clock, outputs);
    });
    table.Add(CLSID_DABSource, [&clock, outputs, &broadcast](REFIID iid, void** object) {
        return dshow::CreateObject<DabSource>(iid, object, clock, outputs, broadcast);
    });
}

} // namespace filters
