#include "graph/RecordName.h"

WString FormatRecordName(const WString& label, const LocalTime& start) {
    return FormatW(WTEXT("%s_%02d%02d%02d%02d%02d%02d.dmb"), label, start.year % 100, start.month, start.day,
                   start.hour, start.minute, start.second);
}
