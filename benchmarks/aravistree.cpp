#include "aravistree.h"

#ifdef ORLIX_HAS_ARAVIS

#include <arv.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint64_t memorySize = std::uint64_t{64} * 1024;
std::array<std::uint8_t, memorySize> memory;

// A GObject class in plain functions.
struct MemoryDevice {
    ArvDevice parent;
};
struct MemoryDeviceClass {
    ArvDeviceClass parent;
};

std::uint8_t* place(guint64 address) {
    return memory.data() + address % (memorySize - 64);
}

gboolean readMemory(ArvDevice*, guint64 address, guint32 size, void* buffer, GError**) {
    std::memcpy(buffer, place(address), size);
    return TRUE;
}
gboolean writeMemory(ArvDevice*, guint64 address, guint32 size, void* buffer, GError**) {
    std::memcpy(place(address), buffer, size);
    return TRUE;
}
gboolean readRegister(ArvDevice*, guint64 address, guint32* value, GError**) {
    std::memcpy(value, place(address), sizeof *value);
    return TRUE;
}
gboolean writeRegister(ArvDevice*, guint64 address, guint32 value, GError**) {
    std::memcpy(place(address), &value, sizeof value);
    return TRUE;
}

void initClass(gpointer object, gpointer) {
    auto* device = static_cast<ArvDeviceClass*>(object);
    device->read_memory = readMemory;
    device->write_memory = writeMemory;
    device->read_register = readRegister;
    device->write_register = writeRegister;
}

GType deviceType() {
    static const GType type = g_type_register_static_simple(
        arv_device_get_type(), "OrlixMemoryDevice", sizeof(MemoryDeviceClass), initClass,
        sizeof(MemoryDevice), nullptr, GTypeFlags{});
    return type;
}

void check(const GError* error) {
    if (error != nullptr) {
        std::fprintf(stderr, "Aravis: %s\n", error->message);
        std::exit(1);
    }
}

class Tree final : public OrlixBenchmark::AravisTree {
public:
    explicit Tree(const std::string& text)
        : device_(static_cast<ArvDevice*>(g_object_new(deviceType(), nullptr))),
          tree_(arv_gc_new(device_, text.data(), text.size())) {
        arv_gc_set_register_cache_policy(tree_, ARV_REGISTER_CACHE_POLICY_DISABLE);
        arv_gc_set_range_check_policy(tree_, ARV_RANGE_CHECK_POLICY_ENABLE);
        arv_gc_set_access_check_policy(tree_, ARV_ACCESS_CHECK_POLICY_ENABLE);
    }
    ~Tree() override {
        g_object_unref(tree_);
        g_object_unref(device_);
    }

    void* find(const char* name) override {
        void* node = arv_gc_get_node(tree_, name);
        if (node == nullptr) {
            std::fprintf(stderr, "Aravis: no node %s\n", name);
            std::exit(1);
        }
        return node;
    }
    std::int64_t integer(void* node) override {
        GError* error = nullptr;
        const auto value = arv_gc_integer_get_value(static_cast<ArvGcInteger*>(node), &error);
        check(error);
        return value;
    }
    void setInteger(void* node, std::int64_t value) override {
        GError* error = nullptr;
        arv_gc_integer_set_value(static_cast<ArvGcInteger*>(node), value, &error);
        check(error);
    }
    double real(void* node) override {
        GError* error = nullptr;
        const double value = arv_gc_float_get_value(static_cast<ArvGcFloat*>(node), &error);
        check(error);
        return value;
    }
    const char* symbolic(void* node) override {
        GError* error = nullptr;
        const char* value =
            arv_gc_enumeration_get_string_value(static_cast<ArvGcEnumeration*>(node), &error);
        check(error);
        return value;
    }

private:
    ArvDevice* device_;
    ArvGc* tree_;
};

}  // namespace

std::unique_ptr<OrlixBenchmark::AravisTree> OrlixBenchmark::AravisTree::make(
    const std::string& text) {
    return std::make_unique<Tree>(text);
}

bool OrlixBenchmark::AravisTree::isBuiltIn() {
    return true;
}

#else

bool OrlixBenchmark::AravisTree::isBuiltIn() {
    return false;
}

std::unique_ptr<OrlixBenchmark::AravisTree> OrlixBenchmark::AravisTree::make(const std::string&) {
    return nullptr;
}

#endif
