// The host's end of an open output: counts its values and hands them to the writer. In a run with a
// limit, values that are ahead of the counted pin wait here until it is known whether they belong
// to the run.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "host/outputwriter.h"
#include "host/runstate.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixhost/runner.h"

namespace Orlix::Host {

// Whether the values of a tap come from a source of the pin that counts. If they do, the graph
// tells that pin of each of their updates, with a value or a skip, and they wait for it.
enum class TapSource { SameAsCounted, Another };

// Called on the graph's threads; never blocks. Lives as long as the graph or the run needs it.
class OutputTap final : public DataProcessing::Core::IOutputSink {
public:
    // The writer may be null. A limit of 0 is none; at the limit the run is asked to end. The tap
    // with a limit is the counted one: it calls onPassed when others may let go of values.
    OutputTap(std::size_t index, const OpenOutput& output, std::uint64_t limit,
              std::shared_ptr<RunState> state, std::shared_ptr<OutputWriter> writer,
              std::function<void()> onPassed = {}, TapSource source = TapSource::SameAsCounted);

    void put(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>& update,
             const DataProcessing::Utils::Variant& value) override;
    void skip(const std::shared_ptr<DataProcessing::Core::IGraphUpdate>& update) override;
    bool hasSpace() const override;
    void setSpaceListener(
        const std::weak_ptr<DataProcessing::Core::ISpaceListener>& listener) override;

    void notifySpace();
    // Lets go of the values that the counted pin has passed.
    void release();
    // All of them, behind the end of the graph.
    void releaseAll();
    // Lets go of everything for good: the run is over, though the graph may still hold the tap.
    void close();
    [[nodiscard]] OutputReport report() const;

private:
    struct Held {
        std::uint64_t update = 0;
        RunClock::time_point arrival;
        DataProcessing::Utils::Variant value;
    };

    void pass(std::uint64_t update);
    enum class Behind { Keep, LetGo };

    void release(Behind behind);
    // What follows runs under the lock. What was held ends behind it, since it may be foreign code.
    [[nodiscard]] std::vector<Held> letGo(Behind behind);
    void take(const Held& held);
    // The number of the value, 0 if it belongs no longer to the run.
    std::uint64_t count(const Held& held);

    const std::size_t index_;
    const std::uint64_t limit_;
    const TapSource source_;
    const std::size_t maxHeld_;
    const std::shared_ptr<RunState> state_;
    const std::function<void()> onPassed_;
    mutable std::mutex mutex_;
    std::shared_ptr<OutputWriter> writer_;
    bool isClosed_ = false;
    OutputReport report_;
    std::deque<Held> held_;
    RunClock::time_point first_;
    RunClock::time_point last_;
    std::weak_ptr<DataProcessing::Core::ISpaceListener> listener_;
};

}  // namespace Orlix::Host
