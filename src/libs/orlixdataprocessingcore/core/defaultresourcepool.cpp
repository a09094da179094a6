#include "orlixdataprocessingcore/core/defaultresourcepool.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/lockedconnection.h"
#include "orlixdataprocessingcore/core/services.h"

namespace Orlix::DataProcessing::Core {

IResourcePool::~IResourcePool() = default;

class DefaultResourcePool::Impl {
public:
    using ChangedSignal = Utils::Signal<void(), Utils::VoidCombiner>;

    explicit Impl(Enumerate function) : enumerate(std::move(function)) {}

    // What the change takes out ends after the lock has been released: it is foreign code.
    template <typename Change>
    void change(ResourceMap& removed, const Change& make) {
        {
            std::lock_guard guard(mutex);
            if (!make(removed)) {
                return;
            }
            tellers.push_back(std::this_thread::get_id());
        }
        struct Told {
            Impl& self;
            ~Told() {
                std::lock_guard guard(self.mutex);
                auto& all = self.tellers;
                all.erase(std::find(all.begin(), all.end(), std::this_thread::get_id()));
            }
        };
        const Told told{*this};
        (*signal)();
    }

    // A refresh may find the list as another thread has just left it, whose emission has not come
    // to the caller's own slot yet: that hears of it now. Not within an emission, whose slots see
    // the list as it is anyway, and which would have no end.
    void catchUp() {
        {
            std::lock_guard guard(mutex);
            const auto self = std::this_thread::get_id();
            if (tellers.empty() ||
                std::find(tellers.begin(), tellers.end(), self) != tellers.end()) {
                return;
            }
        }
        (*signal)();
    }

    [[nodiscard]] ResourceMap select(const ResourceInfo& filter, const Utils::TypeInfo& type) {
        std::lock_guard guard(mutex);
        ResourceMap found;
        for (const auto& [info, resource] : resources) {
            if (info.IsSubset(filter) &&
                (!type.isValid() || resource->getTypeInfo(false).canConvert(type))) {
                found.emplace(info, resource);
            }
        }
        return found;
    }

    const Enumerate enumerate;
    const std::shared_ptr<ChangedSignal> signal = std::make_shared<ChangedSignal>();
    std::mutex mutex;
    ResourceMap resources;
    std::vector<std::thread::id> tellers;  // of changes, one for each emission that runs
};

DefaultResourcePool::DefaultResourcePool(Enumerate enumerate)
    : impl_(std::make_unique<Impl>(std::move(enumerate))) {}

DefaultResourcePool::~DefaultResourcePool() = default;

void DefaultResourcePool::addResource(const ResourceInfo& info,
                                      const std::shared_ptr<Utils::IObject>& resource) {
    if (!resource) {
        throw GenICam::InvalidArgumentException("No resource passed.", __FILE__, __LINE__);
    }
    ResourceMap removed;
    impl_->change(removed, [&](ResourceMap& old) {
        auto& place = impl_->resources[info];
        if (place == resource) {
            return false;
        }
        old.emplace(info, std::exchange(place, resource));
        return true;
    });
}

bool DefaultResourcePool::removeResource(const ResourceInfo& info) {
    ResourceMap removed;
    impl_->change(removed, [&](ResourceMap& old) {
        old.insert(impl_->resources.extract(info));
        return !old.empty();
    });
    return !removed.empty();
}

void DefaultResourcePool::setResources(const ResourceMap& resources) {
    for (const auto& [info, resource] : resources) {
        if (!resource) {
            throw GenICam::InvalidArgumentException("No resource passed.", __FILE__, __LINE__);
        }
    }
    ResourceMap removed = resources;
    impl_->change(removed, [&](ResourceMap& old) {
        // Whether the lists differ is asked of the pointers too: a device that was unplugged and
        // has come back has the same properties and is another object.
        const bool changed = impl_->resources < old || old < impl_->resources;
        impl_->resources.swap(old);
        return changed;
    });
}

IResourcePool::ResourceMap DefaultResourcePool::getResources(const Utils::TypeInfo& type) {
    return impl_->select(ResourceInfo(), type);
}

IResourcePool::ResourceMap DefaultResourcePool::findResources(const ResourceInfo& filter,
                                                              const Utils::TypeInfo& type) {
    return impl_->select(filter, type);
}

void DefaultResourcePool::refreshResources(const Utils::TypeInfo&) {
    if (impl_->enumerate) {
        impl_->enumerate(*this);
        impl_->catchUp();
        runPutOffWork(*impl_->signal);
    }
}

std::shared_ptr<Utils::ISignal<void()>> DefaultResourcePool::getResourcesChangedSignal() {
    return impl_->signal;
}

std::shared_ptr<Threading::IThreadPool> DefaultResourcePool::getThreadPool() {
    return getDefaultThreadPool();
}

std::shared_ptr<IBufferProvider> DefaultResourcePool::getBufferProvider() {
    return getDefaultBufferProvider();
}

std::shared_ptr<IUpdateFactory> DefaultResourcePool::getUpdateFactory() {
    return getDefaultUpdateFactory();
}

}  // namespace Orlix::DataProcessing::Core
