// Ports: connections, their end, and what they throw.
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

const std::string nodes =
    "<Integer Name=\"A\"><pValue>R</pValue><pIsAvailable>Av</pIsAvailable><pIsLocked>Lk</pIsLocked>"
    "<pMax>Mx</pMax></Integer>" +
    std::string(Reg{"R", 0}) + std::string(Reg{"Av", 8}) + std::string(Reg{"Lk", 16}) +
    std::string(Reg{"Mx", 24});

struct PortMap : TestMap {
    PortMap() : TestMap(nodes) {
        port.poke(8, 1);
        port.poke(24, 100);
    }
    void failAt(std::int64_t address, int what) {
        port.onRead = port.onWrite = [address, what](std::int64_t at) {
            if (at == address) {
                throw what;
            }
        };
    }
};

}  // namespace

TEST(Port, Rule89AnExceptionOfAnyClassLeavesUnchanged) {
    PortMap t;
    for (const std::int64_t address : {0, 8, 24}) {
        t.failAt(address, static_cast<int>(address) + 1);
        int caught = -1;
        try {
            (void)t.integer("A")->GetMax();
            (void)t.integer("A")->GetValue();
        } catch (int what) {
            caught = what;
        }
        EXPECT_EQ(caught, address + 1);
    }
    t.failAt(16, 17);
    EXPECT_THROW(t.integer("A")->SetValue(1), int);
    EXPECT_THROW((void)t.node("A")->GetAccessMode(), int);
    t.port.onRead = nullptr;
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
}

TEST(Port, Rule89AGenICamExceptionOfAConditionIsNotTakenForNotAvailable) {
    PortMap t;
    t.port.onRead = [](std::int64_t address) {
        if (address == 8) {
            throw GenICam::TimeoutException("no answer", "port.cpp", 7);
        }
    };
    EXPECT_EQ(errorOf<GenICam::TimeoutException>([&] { (void)t.node("A")->GetAccessMode(); }),
              "no answer");
    EXPECT_EQ(errorOf<GenICam::TimeoutException>([&] { (void)t.integer("A")->GetValue(); }),
              "no answer");
    EXPECT_EQ(errorOf<GenICam::TimeoutException>([&] { t.integer("A")->SetValue(1); }),
              "no answer");
}

TEST(Port, Rule89ASetterThatRefusesIsHeardByTheCaller) {
    PortMap t;
    t.port.onWrite = [](std::int64_t) {
        throw GenICam::RuntimeException("FramesPerSecond must be greater than 0.", __FILE__,
                                        __LINE__);
    };
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { t.integer("A")->SetValue(1); }),
              "FramesPerSecond must be greater than 0.");
}

TEST(Port, AnErrorThatThePortItselfSwallowedIsForgotten) {
    PortMap t;
    bool nested = false;
    t.port.onRead = [&](std::int64_t address) {
        if (address == 8 && !nested) {
            nested = true;
            try {
                (void)t.integer("Gone")->GetValue();
            } catch (const GenICam::GenericException&) {
            }
        }
    };
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
}

TEST(Port, SeveralPortsServeOneMap) {
    TestMap t(std::string(Reg{"A"}) +
              "<Port Name=\"Q\"/><IntReg Name=\"B\"><Address>0</Address><Length>8</Length>"
              "<AccessMode>RW</AccessMode><pPort>Q</pPort></IntReg>");
    CMemoryPort other;
    EXPECT_EQ(t.mode("B"), NA);
    EXPECT_TRUE(t.map->Connect(&other, "Q"));
    t.integer("A")->SetValue(1);
    t.integer("B")->SetValue(2);
    EXPECT_EQ(t.port.peek(0), 1);
    std::int64_t value = 0;
    other.Read(&value, 0, 8);
    EXPECT_EQ(value, 2);
}

TEST(Port, ConnectKnowsItsPortsByName) {
    TestMap t(std::string(Reg{"A"}));
    CMemoryPort other;
    EXPECT_FALSE(t.map->Connect(&other, "A"));
    EXPECT_FALSE(t.map->Connect(&other, "Gone"));
    EXPECT_TRUE(t.map->Connect(&other));
    EXPECT_EQ(other.GetPortNode(), t.node("P"));
    EXPECT_EQ(t.port.GetPortNode(), nullptr);
    EXPECT_TRUE(t.map->Connect(nullptr, "P"));
    EXPECT_EQ(other.GetPortNode(), nullptr);
    other.InvalidateNode();
}

TEST(Port, APortThatDiesTakesItselfOffTheMap) {
    TestMap t(std::string(Reg{"A"}));
    {
        CMemoryPort other;
        t.map->Connect(&other, "P");
        EXPECT_EQ(t.mode("A"), RW);
    }
    EXPECT_EQ(t.mode("A"), NA);
}

TEST(Port, AMapThatDiesIsForgottenByItsPorts) {
    CMemoryPort port;
    {
        const CNodeMapRef map = load(document("<Port Name=\"P\"/>"));
        map->Connect(&port, "P");
        EXPECT_NE(port.GetPortNode(), nullptr);
    }
    EXPECT_EQ(port.GetPortNode(), nullptr);
    port.InvalidateNode();
}

TEST(Port, APortMayReadTheMapFromItsOwnRead) {
    TestMap t(nodes);
    t.port.poke(8, 1);
    std::int64_t seen = -1;
    t.port.onRead = [&](std::int64_t address) {
        if (address == 0) {
            seen = t.integer("Mx")->GetValue();
        }
    };
    t.port.poke(24, 5);
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    EXPECT_EQ(seen, 5);
}

TEST(Port, ItsOwnAccessModeNarrowsItsRegisters) {
    struct ReadOnlyPort : CMemoryPort {
        EAccessMode GetAccessMode() const override { return RO; }
    };
    ReadOnlyPort readOnly;
    TestMap t(std::string(Reg{"A"}));
    t.map->Connect(&readOnly, "P");
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_THROW(t.integer("A")->SetValue(1), GenICam::AccessException);
}
