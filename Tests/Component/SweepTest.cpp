#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "Component/ClientFactory.h"
#include "Component/ComponentFactory.h"
#include "Fakes.h"
#include "Fundo/Fundo3/Time.h"
#include "Support/Await.h"

using namespace Tovra::Component;

namespace {

// Milliseconds of the monotonic clock on this thread; 0 leaves it to the system. Other threads, the timers'
// among them, always see the real time.
thread_local long t_frozenAt = 0;

}  // namespace

// Stands in front of the C library's, for the library under test too.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    if (clock != CLOCK_MONOTONIC || t_frozenAt == 0) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    time->tv_sec = t_frozenAt / 1000;
    time->tv_nsec = t_frozenAt % 1000 * 1000000;
    return 0;
}

namespace {

constexpr long kAgeLimit = 300000;  // milliseconds; older than that is swept

class Sweep : public testing::Test {
protected:
    Sweep() {
        m_clients.registerFactory("Client");
        t_frozenAt = static_cast<long>(Tovra::Fundo::CTime::getCurrentMilliSecond());
        FakeClient::accepts = false;
    }
    ~Sweep() override { t_frozenAt = 0; }

    // A client whose login failed, kept by the list alone.
    void failToLogIn() {
        IClient* none = nullptr;
        Detail::CComponentHelper::getComponentFactory("Channel", "Station.main", serverAt(1), none);
        ASSERT_EQ(none, nullptr);
        ASSERT_EQ(FakeClient::alive, 1);
    }
    static void sweepAfter(long milliseconds) {
        t_frozenAt += milliseconds;
        CClientInstanceList::instance()->removeIdleClientInstance(0);
    }

    FakeClientFactory m_clients;
};

TEST_F(Sweep, TakesAClientThatNobodyGotMoreThanFiveMinutesAfterTheLastAttempt) {
    failToLogIn();
    t_frozenAt += kAgeLimit;
    failToLogIn();
    sweepAfter(kAgeLimit);
    EXPECT_EQ(FakeClient::alive, 1);
    sweepAfter(1);
    EXPECT_TRUE(FakeClient::alive == 0 && FakeClient::logouts == 1 && FakeClient::destroys == 1);
    sweepAfter(1);
    EXPECT_TRUE(FakeClient::destroys == 1 && m_clients.made == 1);
}

TEST_F(Sweep, SparesWhatIsHeldLoggedInOrMadeByHand) {
    failToLogIn();
    IClient* held = ClientFactory::getAndMakeClientInstance("Station", serverAt(1));
    auto* wrapper = dynamic_cast<IClientFactoryWrap*>(ClientFactory::wrapClientFactory(&m_clients));
    IUnknown* made = wrapper->create(serverAt(2));
    // Logged in, but its factory is unknown: the keep-alive reference alone is left.
    FakeClient::accepts = true;
    IClient* none = nullptr;
    Detail::CComponentHelper::getComponentFactory("Nothing", "Station.main", serverAt(3), none);
    sweepAfter(2 * kAgeLimit);
    EXPECT_TRUE(FakeClient::alive == 3 && FakeClient::logouts == 0);
    EXPECT_EQ(CClientInstanceList::instance()->findClientInstance("Station", serverAt(1)), held);
    Detail::CComponentHelper::release(held);
    sweepAfter(0);
    EXPECT_EQ(FakeClient::alive, 2);
    Detail::CComponentHelper::release(made);
}

TEST_F(Sweep, IsDoneByATimer) {
    t_frozenAt -= kAgeLimit + 1;
    failToLogIn();
    Support::await([] { return FakeClient::destroys == 1; });
    EXPECT_EQ(FakeClient::logouts, 1);
}

}  // namespace
