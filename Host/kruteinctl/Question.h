#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// One question to a device, asked on a thread of its own, which is left behind when the answer takes too
/// long: the client library waits for some silent devices for ever.
///
/// `ask` may only use what it owns: it may outlive everything else. When a thread has been left behind the
/// process must end with _Exit, so that it does not meet half-destroyed statics.
class Question {
 public:
    using Clock = std::chrono::steady_clock;

    explicit Question(std::function<void()> ask);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    /// \return false when `ask` has not ended by then.
    /// \throws what `ask` has thrown, the first time that it is looked at.
    bool AwaitUntil(Clock::time_point deadline) const;

    /// Whether a thread of any question runs on without anybody who waits for it.
    static bool AnyIsLeftBehind();

 private:
    struct State;

    std::shared_ptr<State> m_state;
};

/// A question with an answer.
template <typename Answer>
class QuestionFor {
 public:
    explicit QuestionFor(std::function<Answer()> ask)
        : m_answer(std::make_shared<std::optional<Answer>>()),
          m_question([answer = m_answer, ask = std::move(ask)] { answer->emplace(ask()); }) {}

    /// \return nothing when there is no answer by then.
    /// \throws what `ask` has thrown.
    std::optional<Answer> AwaitUntil(Question::Clock::time_point deadline) const {
        if (!m_question.AwaitUntil(deadline)) return std::nullopt;
        return *m_answer;
    }

 private:
    std::shared_ptr<std::optional<Answer>> m_answer;
    Question m_question;
};
