#include "orlixdataprocessingcore/services/updatefactory.h"

#include <atomic>
#include <vector>

namespace Orlix::DataProcessing::Core {

namespace {

std::atomic<std::uint64_t> lastSequenceNumber{0};

class GraphUpdate final : public IGraphUpdate {
public:
    explicit GraphUpdate(const std::shared_ptr<IGraphUpdate>& parent)
        : sequenceNumber_(lastSequenceNumber.fetch_add(1, std::memory_order_relaxed) + 1),
          parent_(parent) {}

    ~GraphUpdate() override { release(std::move(parent_)); }

    [[nodiscard]] std::uint64_t getSequenceNumber() const noexcept override {
        return sequenceNumber_;
    }
    [[nodiscard]] std::shared_ptr<IGraphUpdate> getParent() const override { return parent_; }

private:
    // Takes a long chain of parents apart one by one: destructors that call each other would need a
    // stack as deep as the chain.
    static void release(std::shared_ptr<IGraphUpdate>&& parent) {
        static thread_local std::vector<std::shared_ptr<IGraphUpdate>>* pending = nullptr;
        if (!parent) {
            return;
        }
        if (pending != nullptr) {
            pending->push_back(std::move(parent));
            return;
        }
        std::vector<std::shared_ptr<IGraphUpdate>> chain;
        chain.push_back(std::move(parent));
        pending = &chain;
        while (!chain.empty()) {
            const std::shared_ptr<IGraphUpdate> next = std::move(chain.back());
            chain.pop_back();
        }
        pending = nullptr;
    }

    std::uint64_t sequenceNumber_;
    std::shared_ptr<IGraphUpdate> parent_;
};

}  // namespace

IGraphUpdate::~IGraphUpdate() = default;
IUpdateFactory::~IUpdateFactory() = default;

std::shared_ptr<IGraphUpdate> UpdateFactory::createUpdate(
    const INode*, const std::shared_ptr<IGraphUpdate>& parent) {
    return std::make_shared<GraphUpdate>(parent);
}

}  // namespace Orlix::DataProcessing::Core
