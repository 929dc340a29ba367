#include "tuner/ChannelStep.h"

std::optional<int> StepChannel(int from, int step, int channelCount, int kind,
                               const std::function<std::optional<int>(int)>& kindAt) {
    int position = from;
    for (int tried = 0; tried < channelCount; ++tried) {
        position += step;
        if (position < 0)
            position = channelCount - 1;
        else if (position >= channelCount)
            position = 0;
        if (kindAt(position) == kind)
            return position;
    }
    return std::nullopt;
}
