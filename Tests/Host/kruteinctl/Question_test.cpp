#include "Host/kruteinctl/Question.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

Question::Clock::time_point In(std::chrono::milliseconds time) {
    return Question::Clock::now() + time;
}

}  // namespace

TEST(Question, HasItsAnswer) {
    const QuestionFor<std::string> question([] { return std::string("answer"); });
    EXPECT_EQ(question.AwaitUntil(In(std::chrono::seconds(30))), "answer");
    EXPECT_FALSE(Question::AnyIsLeftBehind());
}

TEST(Question, IsAskedOnAnotherThread) {
    const QuestionFor<std::thread::id> question([] { return std::this_thread::get_id(); });
    EXPECT_NE(question.AwaitUntil(In(std::chrono::seconds(30))), std::this_thread::get_id());
}

TEST(Question, PassesOnWhatIsThrown) {
    const QuestionFor<int> question([]() -> int { throw std::runtime_error("no"); });
    EXPECT_THROW(question.AwaitUntil(In(std::chrono::seconds(30))), std::runtime_error);
}

TEST(Question, IsLeftBehindWithoutAnAnswer) {
    std::promise<int> late;
    {
        const QuestionFor<int> question([&] { return late.get_future().get(); });
        EXPECT_FALSE(question.AwaitUntil(In(std::chrono::milliseconds(30))));
        EXPECT_TRUE(Question::AnyIsLeftBehind());
        late.set_value(1);
        EXPECT_EQ(question.AwaitUntil(In(std::chrono::seconds(30))), 1);
    }
    EXPECT_FALSE(Question::AnyIsLeftBehind());
}
