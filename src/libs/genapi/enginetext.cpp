// The text view of values. It knows no locale, and what it writes it reads back.
#include "genapi/engine.h"
#include "genapi/engineerror.h"
#include "genapi/numbertext.h"
#include "genapi/valuetext.h"

namespace GenApi::Detail {

namespace {

std::string hexOf(std::span<const std::uint8_t> bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text("0x");
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

}  // namespace

std::string Engine::toText(NodeId id, CacheUse use) {
    const Node& self = node(id);
    if (self.kind == Kind::command) {
        return isDone(id) ? "1" : "0";
    }
    requireReadable(id);
    switch (self.kind) {
        case Kind::category:
            return std::string(
                d_->text(self.displayName.count != 0 ? self.displayName : self.name));
        case Kind::boolean:
            return truth(id, use) ? "1" : "0";
        case Kind::enumEntry:
            return std::string(d_->text(d_->entries[self.detail].symbolic));
        case Kind::enumeration: {
            const std::int64_t value = integer(id, use);
            const NodeId entry = entryOf(id, value);
            if (entry == noNode) {
                GENAPI_THROW(OutOfRangeException,
                             says(id, "has the value " + std::to_string(value) +
                                          ", which none of its entries has."));
            }
            return std::string(d_->text(d_->entries[node(entry).detail].symbolic));
        }
        case Kind::string:
        case Kind::stringReg:
        case Kind::configText:
            return text(id, use);
        case Kind::configRom:
        case Kind::byteRegister: {
            std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length(id)));
            readBytes(id, bytes, use);
            return hexOf(bytes);
        }
        default:
            break;
    }
    return valueTypeOf(self.kind) == ValueType::real
               ? formatFloat(real(id, use), notation(id), precision(id))
               : formatInteger(integer(id, use), representation(id));
}

void Engine::fromText(NodeId id, std::string_view text, Verify verify) {
    const auto refuse = [&](const char* what) {
        requireWritable(id);
        GENAPI_THROW(InvalidArgumentException,
                     says(id, "can not take '" + std::string(text) + "': it is no " + what + "."));
    };
    const Node& self = node(id);
    switch (self.kind) {
        case Kind::boolean:
        case Kind::command: {
            const auto truth = BooleanOfText(text);
            if (!truth) {
                refuse("truth value");
            } else if (self.kind == Kind::boolean) {
                setInteger(id, *truth ? 1 : 0, verify);
            } else if (*truth) {
                execute(id);
            } else {
                requireWritable(id);
            }
            return;
        }
        case Kind::enumeration:
            setSymbolic(id, EntryOfText(text));
            return;
        case Kind::string:
        case Kind::stringReg:
            setText(id, text);
            return;
        case Kind::configRom:
        case Kind::byteRegister:
            setBytes(id, bytesOf(id, text));
            return;
        case Kind::category:
        case Kind::enumEntry:
        case Kind::configText:
            requireWritable(id);
            return;
        default:
            break;
    }
    if (valueTypeOf(self.kind) == ValueType::real) {
        const auto value = FloatOfText(text);
        if (!value) {
            refuse("finite number");
        } else {
            setReal(id, *value, verify);
        }
        return;
    }
    const auto value = IntegerOfText(text, representation(id));
    if (!value) {
        refuse("64-bit integer");
    } else {
        setInteger(id, *value, verify);
    }
}

std::vector<std::uint8_t> Engine::bytesOf(NodeId id, std::string_view text) {
    auto bytes = BytesOfText(text);
    if (!bytes) {
        GENAPI_THROW(InvalidArgumentException,
                     says(id, "can not take '" + std::string(text) +
                                  "': it is no sequence of bytes in hexadecimal."));
    }
    return *std::move(bytes);
}

}  // namespace GenApi::Detail
