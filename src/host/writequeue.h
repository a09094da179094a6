// A bounded queue of values to be written, with the threads that write them.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::Host {

struct OutputValue {
    std::size_t output = 0;    // index of the pin
    std::uint64_t number = 0;  // of the value on its pin, from 1
    std::uint64_t update = 0;
    DataProcessing::Utils::Variant value;
};

// With one thread values are written in the order in which they came. add() never blocks: whoever
// adds asks hasSpace() first; what is added in spite of a false is kept all the same. Nothing is
// written before begin(), or before the queue is full: who waits for space before that would wait
// for ever. A queue that ends before drops what waits.
class WriteQueue {
public:
    using Work = std::function<void(const OutputValue&)>;

    // The work must not throw. onSpace is called, with no lock held, when a full queue has room
    // again.
    WriteQueue(std::size_t capacity, std::size_t threads, Work work, std::function<void()> onSpace);
    ~WriteQueue();
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    void add(OutputValue value);
    [[nodiscard]] bool hasSpace() const;
    // Values that wait or are being written.
    [[nodiscard]] std::size_t size() const;
    void begin();
    // Writes what waits and ends the threads.
    void finish();
    // Ends the threads in place of finish(): what waits and what still comes is dropped.
    void discard();

private:
    void endThreads();
    void writeValues();

    const std::size_t capacity_;
    const Work work_;
    const std::function<void()> onSpace_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<OutputValue> waiting_;
    std::size_t busy_ = 0;
    bool begun_ = false;
    bool finishing_ = false;
    bool discarding_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace Orlix::Host
