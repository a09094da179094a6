#include "orlixcamera/codecs/bmprunlength.h"

#include <algorithm>

#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

// Walks the codes. The position is in rows of the file, which start at the bottom.
class RunDecoder {
public:
    RunDecoder(const InputFile& file, const BmpHeader& header, const DecodedPicture& picture)
        : reader_(file, header.pixelOffset),
          header_(header),
          picture_(picture),
          pixelBytes_(picture.pixelType == PixelType_Mono8 ? 1 : 3) {}

    void Decode() {
        Blank();
        while (!isDone_) {
            const unsigned count = Byte();
            const unsigned value = Byte();
            if (count != 0) {
                Run(count, value);
            } else if (value > 2) {
                Literal(value);
            } else {
                Escape(value);
            }
        }
    }

private:
    unsigned Byte() {
        unsigned char value = 0;
        reader_.Read(&value, 1);
        return value;
    }

    void Put(std::uint64_t x, std::uint64_t y, unsigned index) const {
        unsigned char* target = picture_.Row(header_.height - 1 - y) + x * pixelBytes_;
        std::copy_n(header_.palette[index].begin(), pixelBytes_, target);
    }

    void Blank() const {
        for (std::uint32_t y = 0; y < header_.height; ++y) {
            for (std::uint32_t x = 0; x < header_.width; ++x) {
                Put(x, y, 0);
            }
        }
    }

    void Next(unsigned index) {
        if (y_ >= header_.height || x_ >= header_.width) {
            throw CodecError("the pixel data is damaged");
        }
        Put(x_, y_, index);
        ++x_;
    }

    // The i-th pixel of a byte that is told by its value. The lower half of a byte of two pixels
    // may lie behind the row: it fills the byte, and is not drawn.
    void NextOf(unsigned value, unsigned i) {
        const bool isLower = header_.compression != BmpCompression::RunLength8 && i % 2 != 0;
        if (!isLower || x_ != header_.width) {
            Next(IndexIn(value, i));
        }
    }

    // The index of the i-th pixel that a byte stands for.
    [[nodiscard]] unsigned IndexIn(unsigned value, unsigned i) const {
        if (header_.compression == BmpCompression::RunLength8) {
            return value;
        }
        return i % 2 == 0 ? value >> 4U : value & 0x0FU;
    }

    void Run(unsigned count, unsigned value) {
        for (unsigned i = 0; i < count; ++i) {
            NextOf(value, i);
        }
    }

    void Literal(unsigned count) {
        const unsigned perByte = header_.compression == BmpCompression::RunLength8 ? 1 : 2;
        const unsigned bytes = (count + perByte - 1) / perByte;
        unsigned value = 0;
        for (unsigned i = 0; i < count; ++i) {
            value = i % perByte == 0 ? Byte() : value;
            NextOf(value, i);
        }
        if (bytes % 2 != 0) {
            Byte();
        }
    }

    void Escape(unsigned code) {
        if (code == 1) {
            isDone_ = true;
            return;
        }
        x_ = code == 0 ? 0 : x_ + Byte();
        y_ += code == 0 ? 1 : Byte();
    }

    BufferedReader reader_;
    const BmpHeader& header_;
    const DecodedPicture& picture_;
    std::size_t pixelBytes_;
    std::uint64_t x_ = 0;
    std::uint64_t y_ = 0;
    bool isDone_ = false;
};

}  // namespace

void decodeBmpRuns(const InputFile& file, const BmpHeader& header, const DecodedPicture& picture) {
    RunDecoder(file, header, picture).Decode();
}

}  // namespace Orlix
