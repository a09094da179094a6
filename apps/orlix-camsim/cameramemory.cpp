#include "cameramemory.h"

#include <algorithm>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/registertable.h"

namespace Orlix::Camsim {
namespace {

using Emulated::Session;

// What the camera throws, as a status; nothing where a device would not answer.
template <typename Call>
std::optional<Status> statusOf(const Call& call) {
    try {
        return call();
    } catch (const GenICam::AccessException&) {
        return Status::AccessDenied;
    } catch (const GenICam::OutOfRangeException&) {
        return Status::InvalidParameter;
    } catch (const GenICam::InvalidArgumentException&) {
        return Status::InvalidParameter;
    } catch (const GenICam::TimeoutException&) {
        return std::nullopt;
    } catch (const GenICam::RuntimeException&) {
        return std::nullopt;
    }
}

bool contains(std::uint32_t begin, std::size_t size, std::uint32_t address) {
    return address >= begin && address - begin < size;
}

}  // namespace

std::optional<CameraMemory::Extent> CameraMemory::find(std::uint32_t address) {
    for (const Emulated::TextRow& row : Emulated::AllTexts()) {
        const auto begin = static_cast<std::uint32_t>(row.address);
        if (contains(begin, row.size, address)) {
            return Extent{begin, static_cast<std::uint32_t>(row.size), true, true,
                          row.access == Emulated::Access::Write};
        }
    }
    for (const Emulated::Row& row : Emulated::AllRegisters()) {
        const auto begin = static_cast<std::uint32_t>(row.address);
        if (contains(begin, Emulated::registerSize, address)) {
            return Extent{begin, Emulated::registerSize, false,
                          row.access != Emulated::Access::Command,
                          row.access != Emulated::Access::Read};
        }
    }
    return std::nullopt;
}

std::optional<Status> CameraMemory::Read(Session session, std::uint32_t address, MutableBytes out) {
    return statusOf([&] {
        for (std::size_t done = 0; done < out.size();) {
            const std::uint32_t here = address + static_cast<std::uint32_t>(done);
            const auto extent = find(here);
            if (!extent) {
                return Status::InvalidAddress;
            }
            if (!extent->isReadable) {
                return Status::AccessDenied;
            }
            const auto content = load(session, *extent);
            const std::uint32_t offset = here - extent->address;
            const std::size_t size =
                std::min<std::size_t>(extent->size - offset, out.size() - done);
            std::copy_n(content.begin() + offset, size, &out[done]);
            done += size;
        }
        return Status::Success;
    });
}

std::optional<Status> CameraMemory::Write(Session session, std::uint32_t address, Bytes bytes) {
    return statusOf([&] {
        for (std::size_t done = 0; done < bytes.size();) {
            const std::uint32_t here = address + static_cast<std::uint32_t>(done);
            const auto extent = find(here);
            if (!extent) {
                return Status::InvalidAddress;
            }
            const std::uint32_t offset = here - extent->address;
            const std::size_t size =
                std::min<std::size_t>(extent->size - offset, bytes.size() - done);
            const Status status = writePart(session, *extent, offset, bytes.subspan(done, size));
            if (status != Status::Success) {
                return status;
            }
            done += size;
        }
        return Status::Success;
    });
}

std::vector<std::uint8_t> CameraMemory::load(Session session, const Extent& extent) {
    std::vector<std::uint8_t> content(extent.size);
    if (session != 0) {
        camera_->Read(session, extent.address, content.data(), content.size());
    } else {
        camera_->Peek(extent.address, content.data(), content.size());
    }
    return content;
}

Status CameraMemory::writePart(Session session, const Extent& extent, std::uint32_t offset,
                               Bytes bytes) {
    if (!extent.isWritable) {
        return Status::WriteProtect;
    }
    if (extent.isText) {
        writeText(session, extent, offset, bytes);
    } else {
        writeNumber(session, extent, offset, bytes);
    }
    return Status::Success;
}

// The zeros behind the end of a text come in pieces of their own and change nothing any more; the
// same text once more is for the camera to take, since it may mean something.
void CameraMemory::writeText(Session session, const Extent& extent, std::uint32_t offset,
                             Bytes bytes) {
    if (offset == 0 || pending_.empty() || pendingAddress_ != extent.address) {
        pending_ = load(session, extent);
        pendingAddress_ = extent.address;
    }
    const auto place = pending_.begin() + offset;
    const bool changes = !std::equal(bytes.begin(), bytes.end(), place);
    std::copy(bytes.begin(), bytes.end(), place);
    const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    const bool isLast = offset + bytes.size() == extent.size;
    if (end == bytes.end() && !isLast) {
        return;
    }
    const auto whole =
        static_cast<std::size_t>(offset) + static_cast<std::size_t>(end - bytes.begin());
    std::fill(pending_.begin() + static_cast<std::ptrdiff_t>(whole), pending_.end(),
              std::uint8_t{0});
    if (!changes && offset != 0) {
        return;
    }
    std::vector<std::uint8_t> text;
    text.swap(pending_);
    camera_->Write(session, extent.address, text.data(), text.size());
    pending_ = std::move(text);
}

void CameraMemory::writeNumber(Session session, const Extent& extent, std::uint32_t offset,
                               Bytes bytes) {
    std::vector<std::uint8_t> number(extent.size);
    if (bytes.size() < extent.size && extent.isReadable) {
        number = load(session, extent);
    }
    std::copy(bytes.begin(), bytes.end(), number.begin() + offset);
    camera_->Write(session, extent.address, number.data(), number.size());
}

}  // namespace Orlix::Camsim
