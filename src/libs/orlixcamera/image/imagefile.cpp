#include "orlixcamera/imagefile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "gcbase/gcexception.h"
#include "orlixcamera/codecs/bmpdecoder.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/encoders.h"
#include "orlixcamera/codecs/inputfile.h"
#include "orlixcamera/codecs/jpegdecoder.h"
#include "orlixcamera/codecs/outputfile.h"
#include "orlixcamera/codecs/pngdecoder.h"
#include "orlixcamera/codecs/tiffdecoder.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix {

using GenICam::gcstring;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using namespace std::string_view_literals;

namespace {

struct Format {
    EImageFileFormat id;
    const char* name;
    std::array<std::string_view, 2> extensions;
    std::array<std::string_view, 4> signatures;  // what the content may begin with
    DecodedPicture (*decode)(const InputFile&, const COrlixImageBase&);
    bool (*canEncode)(EPixelType);
    void (*encode)(const COrlixImageBase&, OutputFile&, const ImageSaveOptions&);
};

// The last two signatures of TIFF are those of its form for more than 4 GB.
constexpr std::array<Format, 4> formats = {{
    {ImageFileFormat_Bmp, "BMP", {"bmp"}, {"BM"sv}, decodeBmp, canEncodeBmp, encodeBmp},
    {ImageFileFormat_Tiff,
     "TIFF",
     {"tif", "tiff"},
     {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv},
     decodeTiff,
     canEncodeTiff,
     encodeTiff},
    {ImageFileFormat_Jpeg,
     "JPEG",
     {"jpg", "jpeg"},
     {"\xFF\xD8\xFF"sv},
     decodeJpeg,
     canEncodeJpeg,
     encodeJpeg},
    {ImageFileFormat_Png,
     "PNG",
     {"png"},
     {"\x89PNG\r\n\x1A\n"sv},
     decodePng,
     canEncodePng,
     encodePng},
}};

const Format* findFormat(EImageFileFormat id) {
    const auto* found = std::find_if(formats.begin(), formats.end(),
                                     [&](const Format& format) { return format.id == id; });
    return found != formats.end() ? found : nullptr;
}

bool contentMatches(const Format& format, std::string_view head) {
    return std::any_of(
        format.signatures.begin(), format.signatures.end(), [&](std::string_view signature) {
            return !signature.empty() && head.substr(0, signature.size()) == signature;
        });
}

const Format& recognize(const InputFile& file) {
    std::array<char, 8> bytes{};
    const std::string_view head(bytes.data(), file.ReadSome(0, bytes.data(), bytes.size()));
    for (const Format& format : formats) {
        if (contentMatches(format, head)) {
            return format;
        }
    }
    throw CodecError("the content is none of BMP, JPEG, PNG and TIFF");
}

std::string extensionOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind('.');
    std::string extension(dot == std::string_view::npos || dot == 0 ? "" : name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

// The one text of every failure: what was tried, with which file, why it failed.
[[noreturn]] void raise(const char* action, const Format* format, const gcstring& path,
                        const char* cause) {
    std::string text = std::string("Cannot ") + action + " ";
    text += format != nullptr ? std::string(format->name) + " " : "";
    text += "image file '" + path.str() + "': " + cause + ".";
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

std::string causeOf(const std::exception& error) {
    const auto* engine = dynamic_cast<const GenICam::GenericException*>(&error);
    std::string cause = engine != nullptr ? engine->GetDescription() : error.what();
    while (!cause.empty() && (cause.back() == '.' || cause.back() == '\n')) {
        cause.pop_back();
    }
    return cause;
}

// A null character would silently shorten the path that the system sees.
void requirePath(const gcstring& path) {
    if (path.empty()) {
        throw CodecError("the path is empty");
    }
    if (path.find('\0') != gcstring::npos) {
        throw CodecError("the path contains a null character");
    }
}

DecodedPicture decodeFile(const gcstring& path, const COrlixImageBase& image) {
    const Format* format = nullptr;
    try {
        requirePath(path);
        const InputFile file(path.c_str());
        format = &recognize(file);
        return format->decode(file, image);
    } catch (const std::exception& error) {
        raise("load", format, path, causeOf(error).c_str());
    }
}

void requirePixelType(const Format& format, EPixelType pixelType) {
    if (!format.canEncode(pixelType)) {
        std::array<char, 20> number{};
        std::snprintf(number.data(), number.size(), "0x%08X", static_cast<unsigned>(pixelType));
        throw CodecError(std::string("the format can not hold the pixel type ") +
                         CPixelTypeMapper::GetNameByPixelType(pixelType) + " (" + number.data() +
                         ")");
    }
}

}  // namespace

void COrlixImageBase::Load(const gcstring& path) {
    DecodedPicture picture = decodeFile(path, *this);
    void* const data = picture.buffer.get();
    AttachBuffer(std::move(picture.buffer), data, picture.size, picture.pixelType, picture.width,
                 picture.height);
}

void COrlixImageBase::Save(const gcstring& path) const {
    saveImage(path, *this);
}

bool CImagePersistence::CanSave(EImageFileFormat format, EPixelType pixelType) noexcept {
    const Format* const found = findFormat(format);
    return found != nullptr && found->canEncode(pixelType);
}

void CImagePersistence::Save(EImageFileFormat format, const gcstring& path,
                             const COrlixImageBase& image, const ImageSaveOptions& options) {
    if (!image.IsValid()) {
        throw InvalidArgumentException("An empty image can not be saved.", __FILE__, __LINE__);
    }
    const Format* const found = findFormat(format);
    try {
        if (found == nullptr) {
            throw CodecError("the file format is not known");
        }
        requirePath(path);
        requirePixelType(*found, image.GetPixelType());
        OutputFile file(path.c_str());
        found->encode(image, file, options);
        file.Commit();
    } catch (const std::exception& error) {
        raise("save", found, path, causeOf(error).c_str());
    }
}

EImageFileFormat CImagePersistence::FormatOfPath(const gcstring& path) {
    const std::string extension = extensionOf(path.view());
    for (const Format& format : formats) {
        const auto& known = format.extensions;
        if (!extension.empty() && std::find(known.begin(), known.end(), extension) != known.end()) {
            return format.id;
        }
    }
    return ImageFileFormat_Undefined;
}

void saveImage(const gcstring& path, const COrlixImageBase& image,
               const ImageSaveOptions& options) {
    const EImageFileFormat format = CImagePersistence::FormatOfPath(path);
    if (format == ImageFileFormat_Undefined && image.IsValid()) {
        raise("save", nullptr, path, "the extension is none of BMP, JPEG, PNG and TIFF");
    }
    CImagePersistence::Save(format, path, image, options);
}

}  // namespace Orlix
