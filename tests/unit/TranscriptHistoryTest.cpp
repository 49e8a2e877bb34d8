#include "ModelFixture.h"

#include "models/TranscriptHistory.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <gtest/gtest.h>

// Seeds the history a finished dictation would leave.
struct AppModelTestAccess {
    static void setRecentTranscripts(AppModel &model, const QList<TranscriptEntry> &entries)
    {
        model.setRecentTranscripts(entries);
    }
};

namespace {

const QDateTime now(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);

TEST(TranscriptHistory, keepsTheFiveNewestAndSkipsBlankText)
{
    QList<TranscriptEntry> history;
    for (const char *text : {"one", "two", "three", "four", "five", "six", " \n\t ", " six "})
        history = updatedTranscriptHistory(history, QString::fromLatin1(text), now);
    QStringList texts;
    for (const auto &entry : history)
        texts.append(entry.text);
    EXPECT_EQ(texts, (QStringList{" six ", "six", "five", "four", "three"})); // untrimmed, no de-duplication
    EXPECT_EQ(history.first().createdAt, now);
    EXPECT_NE(history[0].id, history[1].id);
}

TEST(TypingStatistics, countsUserPerceivedCharactersAndWordsAndRefusesOverflow)
{
    const std::pair<QString, TypingStatistics> cases[] = {
        {"  Hi there", {10, 2}}, {" \n\t ", {0, 0}}, {"👩‍👩‍👧‍👦", {1, 1}}, // one family emoji, seven code points
        {"Cafe\u0301 ok", {7, 2}},                                                          // e plus a combining accent
        {"well-known — fine\nnext", {22, 4}},                                               // a lone dash is a word
        {"🇩🇪\u00a0🇫🇷", {3, 2}},                                                             // flags; no-break space separates
    };
    for (const auto &[text, added] : cases)
        EXPECT_EQ(updatedTypingStatistics({100, 10}, text),
                  (TypingStatistics{100 + added.typedCharacterCount, 10 + added.typedWordCount}))
            << text.toStdString();
    EXPECT_THROW(updatedTypingStatistics({std::numeric_limits<std::int64_t>::max(), 0}, "x"), std::overflow_error);
}

TEST(TranscriptHistoryModel, copyingTellsTheNewestAndOnlyStatisticsSurviveARelaunch)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    const auto history = updatedTranscriptHistory(updatedTranscriptHistory({}, "older", now), "newest", now);
    AppModelTestAccess::setRecentTranscripts(model, history);
    model.copyTranscript(history[1]);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "older");
    EXPECT_EQ(model.statusMessage(), "Saved transcript copied to the clipboard.");
    model.copyTranscript(history[0]);
    EXPECT_EQ(model.statusMessage(), "Transcript copied to the clipboard.");

    QSignalSpy changed(&model, &AppModel::typingStatisticsChanged);
    model.recordInsertedTranscript("  Hi there");
    model.recordInsertedTranscript("  ");
    EXPECT_EQ(changed.count(), 1);
    model.presentError("Old error.");
    model.clearTranscript();
    EXPECT_TRUE(model.recentTranscripts().isEmpty());
    EXPECT_EQ(model.errorMessage(), std::nullopt);

    AppModelTestAccess::setRecentTranscripts(model, history);
    AppModel &relaunched = fixture.makeModel();
    EXPECT_EQ(relaunched.typingStatistics(), (TypingStatistics{10, 2}));
    EXPECT_TRUE(relaunched.recentTranscripts().isEmpty());
}

} // namespace
