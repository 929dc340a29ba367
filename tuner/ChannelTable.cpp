#include "tuner/ChannelTable.h"

#include "platform/wince.h"

const ChannelTableRow ChannelTable[kChannelTableRows] = {
    {175280000, WTEXT("CH7")},  {177008000, WTEXT("CH7")},  {178736000, WTEXT("CH7")},  {181280000, WTEXT("CH8")},
    {183008000, WTEXT("CH8")},  {184736000, WTEXT("CH8")},  {187280000, WTEXT("CH9")},  {189008000, WTEXT("CH9")},
    {190736000, WTEXT("CH9")},  {193280000, WTEXT("CH10")}, {195008000, WTEXT("CH10")}, {196736000, WTEXT("CH10")},
    {199280000, WTEXT("CH11")}, {201008000, WTEXT("CH11")}, {202736000, WTEXT("CH11")}, {205280000, WTEXT("CH12")},
    {207008000, WTEXT("CH12")}, {208736000, WTEXT("CH12")}, {211280000, WTEXT("CH13")}, {213008000, WTEXT("CH13")},
    {214736000, WTEXT("CH13")},
};

WString FormatChannelName(int frequency) {
    for (const ChannelTableRow& row : ChannelTable) {
        if (static_cast<int>(row.frequency) == frequency)
            return FormatW(WTEXT("[%s]"), row.name);
    }
    return FormatW(WTEXT("[%d]"), frequency);
}
