#include "ModelFixture.h"

#include "models/TranscriptHistory.h"
#include "stores/PreferencesStore.h"

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

QStringList textsOf(const QList<TranscriptEntry> &history)
{
    QStringList texts;
    for (const auto &entry : history)
        texts.append(entry.text);
    return texts;
}

TEST(TranscriptHistory, keepsTheFiveNewestAndSkipsBlankText)
{
    QList<TranscriptEntry> history;
    for (const char *text : {"one", "two", "three", "four", "five", "six"})
        history = updatedTranscriptHistory(history, QString::fromLatin1(text), now);
    EXPECT_EQ(textsOf(history), (QStringList{"six", "five", "four", "three", "two"}));
    EXPECT_EQ(history.first().createdAt, now);
    EXPECT_NE(history[0].id, history[1].id);

    EXPECT_EQ(updatedTranscriptHistory(history, " \n\t ", now), history);
    history = updatedTranscriptHistory(history, " six ", now);
    EXPECT_EQ(history.first().text, " six "); // kept untrimmed, no de-duplication
}

TEST(TypingStatistics, countsUserPerceivedCharactersAndWords)
{
    const struct {
        QString text;
        TypingStatistics added;
    } cases[] = {
        {"  Hi there", {10, 2}}, {" \n\t ", {0, 0}},
        {"👩‍👩‍👧‍👦", {1, 1}},              // one family emoji, seven code points
        {"Cafe\u0301 ok", {7, 2}},            // e plus a combining accent
        {"well-known — fine\nnext", {22, 4}}, // a lone dash is a word
        {"🇩🇪\u00a0🇫🇷", {3, 2}},              // flags; no-break space separates
    };
    for (const auto &c : cases) {
        EXPECT_EQ(updatedTypingStatistics({100, 10}, c.text),
                  (TypingStatistics{100 + c.added.typedCharacterCount, 10 + c.added.typedWordCount}))
            << c.text.toStdString();
    }
}

TEST(TypingStatistics, overflowIsRefused)
{
    const TypingStatistics nearlyFull{std::numeric_limits<std::int64_t>::max(), 0};
    EXPECT_THROW(updatedTypingStatistics(nearlyFull, "x"), std::overflow_error);
}

TEST(TranscriptHistoryModel, copyingTellsTheNewestFromAnOlderEntry)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    const auto history = updatedTranscriptHistory(updatedTranscriptHistory({}, "older", now),
                                                  "newest", now);
    AppModelTestAccess::setRecentTranscripts(model, history);

    model.copyTranscript(history[1]);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "older");
    EXPECT_EQ(model.statusMessage(), "Saved transcript copied to the clipboard.");
    model.copyTranscript(history[0]);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "newest");
    EXPECT_EQ(model.statusMessage(), "Transcript copied to the clipboard.");

    model.presentError("Old error.");
    QSignalSpy cleared(&model, &AppModel::recentTranscriptsChanged);
    model.clearTranscript();
    model.clearTranscript();
    EXPECT_EQ(cleared.count(), 2);
    EXPECT_TRUE(model.recentTranscripts().isEmpty());
    EXPECT_EQ(model.errorMessage(), std::nullopt);
    EXPECT_EQ(model.statusMessage(), model.defaultStatusMessage());
}

TEST(TranscriptHistoryModel, statisticsSurviveARelaunchWhileHistoryDoesNot)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    AppModelTestAccess::setRecentTranscripts(model, updatedTranscriptHistory({}, "Hi there", now));
    QSignalSpy changed(&model, &AppModel::typingStatisticsChanged);
    model.recordInsertedTranscript("  Hi there");
    model.recordInsertedTranscript("  ");
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(model.typingStatistics(), (TypingStatistics{10, 2}));

    AppModel &relaunched = fixture.makeModel();
    EXPECT_EQ(relaunched.typingStatistics(), (TypingStatistics{10, 2}));
    EXPECT_TRUE(relaunched.recentTranscripts().isEmpty());
    const PreferencesStore stored(fixture.preferencesPath());
    EXPECT_EQ(stored.integerValue("typedWordCount"), 2);
}

} // namespace
