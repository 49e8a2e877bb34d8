#pragma once

#include "models/QuorlaError.h"
#include "support/PlatformError.h" // for the tests that expect it
#include "support/PlatformWords.h"

#include <QCoro/QCoroTask>
#include <QEventLoop>
#include <QTimer>
#include <exception>
#include <memory>
#include <optional>

// What a coroutine ended with: its value, or the error it threw, as the user would read it.
template <typename T>
struct TaskResult {
    std::optional<T> value;
    std::exception_ptr error;
    bool finished = false;

    [[nodiscard]] QString errorText() const
    {
        if (!error)
            return {};
        try {
            std::rethrow_exception(error);
        } catch (const QuorlaError &quorla) {
            return quorla.errorDescription(PlatformWords::macOS());
        } catch (const std::exception &other) {
            return QString::fromUtf8(other.what());
        }
    }
};

// Runs the event loop until the task ends. QCoro::waitFor would never return from a
// task that throws, so the error is caught here. The guard only keeps a broken test
// from hanging; it is no timing assertion.
template <typename T>
TaskResult<T> waitForResult(QCoro::Task<T> task, int guardMs = 30000)
{
    // Shared with the runner, which may outlive this call when the guard fires.
    auto result = std::make_shared<TaskResult<T>>();
    auto loop = std::make_shared<QEventLoop>();
    [](QCoro::Task<T> task, std::shared_ptr<TaskResult<T>> result,
       std::shared_ptr<QEventLoop> loop) -> QCoro::Task<> {
        try {
            result->value = co_await std::move(task);
        } catch (...) {
            result->error = std::current_exception();
        }
        result->finished = true;
        loop->quit();
    }(std::move(task), result, loop);
    if (!result->finished) {
        QTimer::singleShot(guardMs, loop.get(), &QEventLoop::quit);
        loop->exec();
    }
    return *result;
}

inline QCoro::Task<bool> completion(QCoro::Task<> task)
{
    co_await std::move(task);
    co_return true;
}

// The same for a task with no value: true when it finished.
inline bool waitForDone(QCoro::Task<> task, int guardMs = 30000)
{
    return waitForResult(completion(std::move(task)), guardMs).finished;
}

// The QuorlaError such a task threw, if any; other errors go on to fail the test.
inline std::optional<QuorlaError> quorlaErrorOf(QCoro::Task<> task)
{
    try {
        if (const auto error = waitForResult(completion(std::move(task))).error)
            std::rethrow_exception(error);
    } catch (const QuorlaError &error) {
        return error;
    }
    return std::nullopt;
}
