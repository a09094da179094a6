#include "aravis/receiver.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "aravis/bootstrap.h"
#include "aravis/streamsocket.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using Transport::StreamBuffer;
using Transport::StreamStatistics;

namespace {

// Packet sockets need a right that programs seldom have; one way for all.
void prepare(ArvGvDevice& device, const StreamSettings& settings) {
    arv_gv_device_set_stream_options(&device, ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    arv_gv_device_set_packet_size_adjustment(&device, settings.negotiatePacketSize
                                                          ? ARV_GV_PACKET_SIZE_ADJUSTMENT_ALWAYS
                                                          : ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
}

// Pages of a new buffer are made before the stream begins: a receiving thread that waits for them,
// milliseconds where the system has to put large ones together, loses what comes meanwhile. Kernels
// before 5.14 refuse, and make them on the way.
void makePages(const StreamBuffer& buffer) noexcept {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto data = reinterpret_cast<std::uintptr_t>(buffer.data);
    const std::uintptr_t begin = data / page * page;
    static_cast<void>(::madvise(reinterpret_cast<void*>(begin), data + buffer.capacity - begin,
                                MADV_POPULATE_WRITE));
}

bool isUnfinished(ArvBuffer& source) {
    const ArvBufferStatus status = arv_buffer_get_status(&source);
    return status == ARV_BUFFER_STATUS_ABORTED || status == ARV_BUFFER_STATUS_FILLING;
}

// Of a buffer that the stream has: whether a frame began in it.
bool isBegun(ArvBuffer& source) {
    return isUnfinished(source) || FrameReader::IsUsed(source);
}

}  // namespace

Receiver::Receiver(std::shared_ptr<Connection> connection, std::shared_ptr<StreamState> state,
                   std::size_t payloadSize)
    : connection_(std::move(connection)),
      state_(std::move(state)),
      payloadSize_(payloadSize),
      reader_(connection_->GetCamera().protocol, payloadSize) {
    try {
        createStream();
    } catch (...) {
        if (stream_ != nullptr) {
            static_cast<void>(connection_->BeginDrop(std::move(stream_)));
        }
        throw;
    }
}

Receiver::~Receiver() {
    End();
}

void Receiver::createStream() {
    const bool isNetwork = connection_->GetCamera().protocol == Protocol::GigE;
    StreamSettings settings = state_->GetSettings();
    const bool negotiates = isNetwork && settings.negotiatePacketSize;
    std::string why = makeStream(settings);
    if (stream_ == nullptr && negotiates) {
        // A camera whose packets have a fixed size refuses to try others.
        settings.negotiatePacketSize = false;
        const std::string refused = std::exchange(why, makeStream(settings));
        warning_ = "The packet size of device '" + connection_->GetCamera().label +
                   "' stays as it is, since it can't be negotiated: " + refused + ".";
    }
    if (stream_ == nullptr) {
        const std::string text =
            "Device '" + connection_->GetCamera().label + "' can't be received from: " + why + ".";
        throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
    }
    if (negotiates) {
        state_->ChangeSettings([](StreamSettings& all) { all.negotiatePacketSize = false; });
    }
    if (isNetwork) {
        setProperties();
        reader_.SetTickFrequency(tickFrequency());
        watch();
    }
    events_->Watch(stream_.get(), witness_.get(), packetsPerFrame_);
}

std::string Receiver::makeStream(const StreamSettings& settings) {
    const bool isNetwork = connection_->GetCamera().protocol == Protocol::GigE;
    std::string why;
    stream_ = connection_->CreateStream(
        [isNetwork, settings, events = events_](ArvDevice* device, Error& error) {
            if (isNetwork) {
                prepare(*ARV_GV_DEVICE(device), settings);
            }
            return events->CreateStream([&](void* own) {
                return arv_device_create_stream_full(device, &StreamEvents::OnEvent, own,
                                                     &StreamEvents::Forget, error.Out());
            });
        },
        why);
    return why;
}

void Receiver::watch() {
    constexpr std::uint32_t sizeMask = 0xFFFF;
    const StreamShape shape(payloadSize_,
                            connection_->ReadRegister(Bootstrap::streamPacketSize) & sizeMask);
    constexpr std::uint64_t leaderAndTrailer = 2;
    const FrameShape& frame = hasLongIds() ? shape.ofLongIds : shape.ofShortIds;
    packetsPerFrame_ = frame.count + leaderAndTrailer;
    witness_ = Witness::Open(socket_, shape);
    if (witness_ != nullptr) {
        witness_->SetBuffers(Buffers::None);
    }
}

// Cameras that know no others needn't have the register.
bool Receiver::hasLongIds() const {
    try {
        return (connection_->ReadRegister(Bootstrap::streamConfiguration) &
                Bootstrap::longFrameIds) != 0;
    } catch (const GenICam::GenericException&) {
        return false;
    }
}

std::uint64_t Receiver::tickFrequency() const {
    try {
        const std::uint64_t high = connection_->ReadRegister(Bootstrap::tickFrequencyHigh);
        return high << 32U | connection_->ReadRegister(Bootstrap::tickFrequencyLow);
    } catch (const GenICam::GenericException&) {
        return 0;
    }
}

// At once: with the size that Aravis asks for by itself every frame is lost. It sets its own size
// with the first packet only.
void Receiver::setProperties() {
    constexpr std::int64_t microseconds = 1000;
    const StreamSettings settings = state_->GetSettings();
    const std::size_t size = chooseSocketBuffer();
    g_object_set(
        stream_.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
        static_cast<gint>(size), "packet-resend",
        settings.resend ? ARV_GV_STREAM_PACKET_RESEND_ALWAYS : ARV_GV_STREAM_PACKET_RESEND_NEVER,
        "packet-timeout", static_cast<guint>(settings.packetTimeOut * microseconds),
        "frame-retention", static_cast<guint>(settings.frameRetention * microseconds), nullptr);
    GvcpClient client(connection_->GetCamera().address);
    socket_ = StreamSocket(*stream_, client.GetLocalAddress());
    checkSocketBuffer(size, socket_.SetReceiveBuffer(size));
}

// Room for two frames bridges the moment in which the receiving thread doesn't get a processor.
std::size_t Receiver::chooseSocketBuffer() const {
    constexpr std::size_t smallest = std::size_t{1} << 20U;
    constexpr std::size_t largest = std::size_t{64} << 20U;
    const std::int64_t set = state_->GetSettings().socketBufferSize;
    return set > 0 ? static_cast<std::size_t>(set)
                   : std::clamp(2 * payloadSize_, smallest, largest);
}

void Receiver::checkSocketBuffer(std::size_t wanted, std::size_t granted) {
    const bool isNews = state_->SetSocketBuffer({wanted, granted});
    if (granted >= wanted || !isNews) {
        return;
    }
    const std::string begin =
        "The socket buffer of device '" + connection_->GetCamera().label + "' ";
    warning_ += warning_.empty() ? "" : " ";
    warning_ += socket_.IsKnown()
                    ? begin + "has " + std::to_string(granted) + " bytes instead of " +
                          std::to_string(wanted) +
                          ", so frames may be lost. To allow more: sysctl -w net.core.rmem_max=" +
                          std::to_string(wanted)
                    : begin + "can't be set to " + std::to_string(wanted) +
                          " bytes, so frames may be lost: the system doesn't show it in "
                          "/proc/self/fd.";
}

// Who has taken a buffer out may give it other memory.
bool Receiver::isOf(const Place& place, const StreamBuffer& buffer) {
    return place.source != nullptr && place.data == buffer.data &&
           place.capacity == buffer.capacity;
}

void Receiver::Push(StreamBuffer& buffer) {
    ArvBuffer* source = nullptr;
    bool isNew = false;
    {
        const std::scoped_lock lock(mutex_);
        Place& place = buffers_[&buffer];
        isNew = !isOf(place, buffer);
        if (isNew) {
            place.source.reset(arv_buffer_new_full(buffer.capacity, buffer.data, &buffer, nullptr));
            place.data = buffer.data;
            place.capacity = buffer.capacity;
        }
        place.isHeld = true;
        source = place.source.get();
        FrameReader::Forget(*source);
    }
    if (isNew) {
        makePages(buffer);
    }
    events_->Push(*source);
}

StreamBuffer* Receiver::Pop(std::chrono::microseconds timeOut) {
    const auto time = static_cast<guint64>(std::max<std::int64_t>(timeOut.count(), 0));
    const ObjectPtr<ArvBuffer> source(arv_stream_timeout_pop_buffer(stream_.get(), time));
    if (source == nullptr) {
        return nullptr;
    }
    auto* const buffer =
        static_cast<StreamBuffer*>(const_cast<void*>(arv_buffer_get_user_data(source.get())));
    const std::uint64_t block = arv_buffer_get_frame_id(source.get());
    reader_.Read(*source, *buffer, evidenceOf(*source));
    const std::scoped_lock lock(mutex_);
    buffers_[buffer].isHeld = false;
    ++(buffer->fate == Transport::FrameFate::Delivered ? statistics_.delivered
                                                       : statistics_.failed);
    if (witness_ != nullptr) {
        statistics_.missedForBuffer += witness_->TakeMissedBefore(block);
    }
    return buffer;
}

Evidence Receiver::evidenceOf(ArvBuffer& source) {
    const ArvBufferStatus status = arv_buffer_get_status(&source);
    const Evidence seen = witness_ != nullptr
                              ? witness_->TakeEvidence(arv_buffer_get_frame_id(&source))
                              : Evidence::None;
    if (status != ARV_BUFFER_STATUS_TIMEOUT && status != ARV_BUFFER_STATUS_MISSING_PACKETS) {
        return seen;
    }
    if (events_->TakeLack(source) != 1) {
        return Evidence::None;
    }
    return seen == Evidence::TooLong ? Evidence::TooLong : Evidence::EndOnly;
}

// Packets that found no buffer; of USB cameras these are frames.
std::uint64_t Receiver::underruns() const {
    guint64 completed = 0;
    guint64 failures = 0;
    guint64 packets = 0;
    arv_stream_get_statistics(stream_.get(), &completed, &failures, &packets);
    return packets;
}

// The frames behind the last that was popped, for which no buffer was queued. Without a witness
// there are only the packets of all of them that came.
std::uint64_t Receiver::missedLately() const {
    if (witness_ == nullptr) {
        return (underruns() + packetsPerFrame_ / 2) / packetsPerFrame_;
    }
    std::vector<std::uint64_t> held;
    for (const auto& [buffer, place] : buffers_) {
        // 0 for a frame whose leader came before the buffer did.
        if (place.isHeld && isBegun(*place.source)) {
            held.push_back(arv_buffer_get_frame_id(place.source.get()));
        }
    }
    return witness_->CountMissed(held);
}

StreamStatistics Receiver::GetStatistics() const {
    const std::scoped_lock lock(mutex_);
    StreamStatistics statistics = statistics_;
    if (stream_ != nullptr) {
        addCounts(statistics);
        statistics.missedForBuffer += missedLately();
    } else if (witness_ != nullptr && !isSettled_) {
        statistics.missedForBuffer += missedLately();
    }
    return statistics;
}

// What Aravis counts itself.
void Receiver::addCounts(StreamStatistics& statistics) const {
    if (connection_->GetCamera().protocol == Protocol::GigE) {
        guint64 resent = 0;
        guint64 missing = 0;
        arv_gv_stream_get_statistics(ARV_GV_STREAM(stream_.get()), &resent, &missing);
        statistics.resentPackets = resent;
        statistics.missingPackets = events_->GetMissingPackets();
    }
}

void Receiver::End() noexcept {
    if (stream_ == nullptr) {
        return;
    }
    connection_->CheckAlive();
    const bool wasLost = connection_->IsLost();
    if (!wasLost) {
        // A camera that was stopped sends nothing more; one that was not has no last frame.
        constexpr std::chrono::milliseconds longest{100};
        static_cast<void>(socket_.AwaitEmpty(longest));
        endWitness();
        static_cast<void>(socket_.AwaitEmpty(longest));
    }
    popRest();
    const bool isQuiet = wasLost && silence();
    endWitness();
    drop(isQuiet);
    settle();
}

// Without memory for their descriptions what is left is settled with the others.
void Receiver::popRest() noexcept {
    try {
        while (Pop(std::chrono::microseconds(0)) != nullptr) {
        }
    } catch (const std::exception&) {
        return;
    }
}

void Receiver::endWitness() noexcept {
    if (witness_ != nullptr) {
        events_->Watch(stream_.get(), nullptr, packetsPerFrame_);
        witness_->End();
    }
}

// Aravis writes to the camera before it ends its thread, which takes it seconds if the camera is
// lost. Then it is enough that the thread can't write into a buffer any more; where that isn't to
// be had, the buffers have to wait.
void Receiver::drop(bool isQuiet) noexcept {
    ObjectPtr<ArvStream> stream;
    {
        const std::scoped_lock lock(mutex_);
        addCounts(statistics_);
        if (witness_ == nullptr) {
            statistics_.missedForBuffer += missedLately();
        }
        stream = std::move(stream_);
    }
    events_->Watch(nullptr, nullptr, packetsPerFrame_);
    const Connection::Drop drop = connection_->BeginDrop(std::move(stream));
    if (!isQuiet && !connection_->AwaitDrop(drop, Connection::Until::Lost) && !silence()) {
        static_cast<void>(connection_->AwaitDrop(drop, Connection::Until::Done));
    }
}

// No packet comes from now on, those that came have been taken, and the thread that took them waits
// for more.
bool Receiver::silence() const noexcept {
    constexpr std::chrono::milliseconds longest{100};
    constexpr std::chrono::milliseconds step{1};
    if (!socket_.Mute() || !socket_.AwaitEmpty(longest)) {
        return false;
    }
    for (auto waited = step; !events_->GetThread().IsIdle(); waited += step) {
        if (waited > longest) {
            return false;
        }
        std::this_thread::sleep_for(step);
    }
    return true;
}

void Receiver::settle() noexcept {
    const std::scoped_lock lock(mutex_);
    try {
        statistics_.missedForBuffer += witness_ != nullptr ? missedLately() : 0;
        settleHeld();
    } catch (const std::exception&) {
        // Without memory the counts end here; the buffers are given back all the same.
    }
    isSettled_ = true;
    buffers_.clear();
}

// What became of the buffers that the stream had to its end: frames that were complete by then are
// that, though nobody has taken them; those that had begun have failed.
void Receiver::settleHeld() {
    std::vector<std::pair<StreamBuffer*, ArvBuffer*>> begun;
    for (const auto& [buffer, place] : buffers_) {
        if (place.isHeld && isBegun(*place.source)) {
            begun.emplace_back(buffer, place.source.get());
        }
    }
    std::sort(begun.begin(), begun.end(), [](const auto& first, const auto& second) {
        return arv_buffer_get_timestamp(first.second) < arv_buffer_get_timestamp(second.second);
    });
    for (const auto& [buffer, source] : begun) {
        if (!isUnfinished(*source)) {
            reader_.Read(*source, *buffer, evidenceOf(*source));
        }
        ++(buffer->fate == Transport::FrameFate::Delivered ? statistics_.delivered
                                                           : statistics_.failed);
    }
}

}  // namespace Orlix::Aravis
