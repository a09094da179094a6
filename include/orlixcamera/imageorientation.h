// The order in which the lines of an image lie in its buffer. A plain value for any thread.
#pragma once

namespace Orlix {

enum EImageOrientation {
    // The first row of the image is located at the start of the image buffer.
    ImageOrientation_TopDown = 0,
    // The last row of the image is located at the start of the image buffer.
    ImageOrientation_BottomUp = 1,
};

}  // namespace Orlix
