#include "BaseClasses/CAMThread.h"

#include "support/directshow/Gate.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>

namespace {

constexpr DWORD kEnd = 0;
constexpr DWORD kFailed = static_cast<DWORD>(E_FAIL);

/// A worker whose body the test gives.
class Worker final : public CAMThread {
public:
    explicit Worker(std::function<DWORD(Worker&)> body) : m_body(std::move(body)) {}
    ~Worker() override { Close(); }

private:
    DWORD ThreadProc() override { return m_body(*this); }

    const std::function<DWORD(Worker&)> m_body;
};

/// Answers each command with the next number, until kEnd.
DWORD AnswerWithNext(Worker& worker)
{
    for (;;) {
        const DWORD command = worker.GetRequest();
        worker.Reply(command + 1);
        if (command == kEnd)
            return 0;
    }
}

TEST(CAMThreadTest, EveryCommandGetsItsOwnReply)
{
    Worker worker(AnswerWithNext);
    ASSERT_TRUE(worker.Create());

    for (DWORD command = 1; command <= 1000; ++command)
        ASSERT_EQ(worker.CallWorker(command), command + 1);

    EXPECT_EQ(worker.CallWorker(kEnd), kEnd + 1);
}

TEST(CAMThreadTest, CommandStaysPendingUntilTheReply)
{
    Gate checked;
    Worker worker([&](Worker& self) -> DWORD {
        const DWORD command = self.GetRequest();
        DWORD first = 0;
        DWORD second = 0;
        const bool isPending = self.CheckRequest(&first) && self.CheckRequest(&second) &&
                               self.CheckRequest(nullptr) &&
                               ::WaitForSingleObject(self.GetRequestHandle(), 0) == WAIT_OBJECT_0;
        const bool isSame = first == command && second == command && self.GetRequestParam() == command;
        self.Reply(isPending && isSame ? 1 : 0);
        if (!self.CheckRequest(nullptr)) // the client sends no second one
            checked.Pass();
        return 0;
    });
    ASSERT_TRUE(worker.Create());

    EXPECT_EQ(worker.CallWorker(77), 1u);
    EXPECT_TRUE(checked.WaitFor());
}

TEST(CAMThreadTest, CloseWithoutAWorkerReturns)
{
    Worker worker(AnswerWithNext);

    worker.Close();

    EXPECT_FALSE(worker.ThreadExists());
}

TEST(CAMThreadTest, CallWithoutAWorkerFails)
{
    Worker worker(AnswerWithNext);

    EXPECT_EQ(worker.CallWorker(1), kFailed);
}

TEST(CAMThreadTest, SecondCreateIsRefusedWhileTheFirstWorkerIsNotClosed)
{
    Worker worker(AnswerWithNext);
    ASSERT_TRUE(worker.Create());

    EXPECT_FALSE(worker.Create());
    worker.CallWorker(kEnd);
    EXPECT_FALSE(worker.Create()); // ended, but not closed
    EXPECT_TRUE(worker.ThreadExists());
}

TEST(CAMThreadTest, CanBeCreatedAgainAfterClose)
{
    Worker worker(AnswerWithNext);

    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(worker.Create());
        EXPECT_EQ(worker.CallWorker(5), 6u);
        EXPECT_EQ(worker.CallWorker(kEnd), kEnd + 1);
        worker.Close();
        EXPECT_FALSE(worker.ThreadExists());
    }
}

TEST(CAMThreadTest, TwoClientsAreServedOneAfterTheOther)
{
    Worker worker(AnswerWithNext);
    ASSERT_TRUE(worker.Create());
    const auto callMany = [&](DWORD firstCommand, int& wrong) {
        for (DWORD n = 0; n < 1000; ++n) {
            const DWORD command = firstCommand + n;
            if (worker.CallWorker(command) != command + 1)
                ++wrong;
        }
    };
    int wrongHere = 0;
    int wrongThere = 0;

    std::thread other([&] { callMany(10000, wrongThere); });
    callMany(20000, wrongHere);
    other.join();

    EXPECT_EQ(wrongHere, 0);
    EXPECT_EQ(wrongThere, 0);
    worker.CallWorker(kEnd);
}

TEST(CAMThreadTest, CallFailsWhenTheWorkerReturnsWithoutAReply)
{
    Worker worker([](Worker& self) -> DWORD {
        self.GetRequest();
        return 0;
    });
    ASSERT_TRUE(worker.Create());

    EXPECT_EQ(worker.CallWorker(1), kFailed);
    EXPECT_EQ(worker.CallWorker(2), kFailed);
}

TEST(CAMThreadTest, ExceptionEndsTheWorkerButNotTheProcess)
{
    Worker worker([](Worker& self) -> DWORD {
        self.GetRequest();
        throw std::runtime_error("by the test");
    });
    ASSERT_TRUE(worker.Create());

    EXPECT_EQ(worker.CallWorker(1), kFailed);
    worker.Close();
    EXPECT_FALSE(worker.ThreadExists());
}

TEST(CAMThreadTest, WorkerIsInTheMultiThreadedApartment)
{
    Worker worker([](Worker& self) -> DWORD {
        self.GetRequest();
        APTTYPE type = APTTYPE_CURRENT;
        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
        const HRESULT hr = ::CoGetApartmentType(&type, &qualifier);
        // An implicit member of the apartment would have a qualifier.
        self.Reply(SUCCEEDED(hr) && type == APTTYPE_MTA && qualifier == APTTYPEQUALIFIER_NONE ? 1 : 0);
        return 0;
    });
    ASSERT_TRUE(worker.Create());

    EXPECT_EQ(worker.CallWorker(1), 1u);
}

} // namespace
