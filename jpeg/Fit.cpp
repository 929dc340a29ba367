#include "jpeg/Fit.h"

#include <cstdint>

namespace jpeg {

namespace {

int LargestReduction(int fitted, int side) {
    for (int s = 3; s > 0; --s) {
        if (fitted <= side >> s) {
            return s;
        }
    }
    return 0;
}

int Proportion(int side, int target, int other) {
    return static_cast<int>(static_cast<std::int64_t>(side) * target / other);
}

} // namespace

Fit FitPicture(int pictureWidth, int pictureHeight, int targetWidth, int targetHeight) {
    Fit fit;
    if (targetWidth <= 0 || targetHeight <= 0) {
        return fit;
    }
    if (pictureWidth <= targetWidth && pictureHeight <= targetHeight) {
        fit.width = pictureWidth;
        fit.height = pictureHeight;
        fit.exact = true;
    } else {
        if (pictureWidth < targetWidth) {
            fit.width = Proportion(pictureWidth, targetHeight, pictureHeight);
            fit.height = targetHeight;
        } else if (pictureHeight < targetHeight) {
            fit.width = targetWidth;
            fit.height = Proportion(pictureHeight, targetWidth, pictureWidth);
        } else {
            // On purpose: a picture that passes the target in both directions loses its aspect ratio.
            fit.width = targetWidth;
            fit.height = targetHeight;
        }
        const float ratioX = static_cast<float>(pictureWidth) / static_cast<float>(targetWidth);
        const float ratioY = static_cast<float>(pictureHeight) / static_cast<float>(targetHeight);
        fit.reduction =
            ratioX < ratioY ? LargestReduction(fit.width, pictureWidth) : LargestReduction(fit.height, pictureHeight);
        fit.exact = fit.width == pictureWidth >> fit.reduction && fit.height == pictureHeight >> fit.reduction;
    }
    fit.offsetX = (targetWidth - fit.width) >> 1;
    fit.offsetY = (targetHeight - fit.height) >> 1;
    return fit;
}

Placement PlaceFit(const Fit& fit, int targetWidth, int targetHeight) {
    const std::size_t width = static_cast<std::size_t>(targetWidth);
    const std::size_t chromaWidth = (width + 1) >> 1;
    const std::size_t freeX = static_cast<std::size_t>(targetWidth - fit.width);
    const std::size_t freeY = static_cast<std::size_t>(targetHeight - fit.height);
    Placement place;
    place.luma = (freeY >> 1) * width + (freeX >> 1);
    place.rgb565 = place.luma * 2;
    place.rgb24 = place.luma * 3;
    place.chroma = (freeY >> 2) * chromaWidth + (freeX >> 2);
    return place;
}

} // namespace jpeg
