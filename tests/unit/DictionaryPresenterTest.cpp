#include "ModelFixture.h"

#include "views/dictionary/DictionaryPresenter.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

struct CanAddCase {
    const char *term;
    const char *replacement;
    bool usesReplacement;
    bool expected;
};

class CanAddTerm : public ::testing::TestWithParam<CanAddCase> {};

TEST_P(CanAddTerm, needsTextInEveryFieldInUse)
{
    const auto &c = GetParam();
    EXPECT_EQ(DictionaryPresenter::canAddTerm(QString::fromUtf8(c.term), QString::fromUtf8(c.replacement),
                                              c.usesReplacement),
              c.expected);
}

INSTANTIATE_TEST_SUITE_P(Drafts, CanAddTerm,
                         ::testing::Values(CanAddCase{"Quorla", "", false, true},
                                           CanAddCase{"Quorla", "", true, false},
                                           CanAddCase{"Quorla", " \n ", true, false},
                                           CanAddCase{"kwor la", "Quorla", true, true},
                                           CanAddCase{"", "Quorla", true, false},
                                           CanAddCase{"  \t", "", false, false},
                                           // A replacement typed before switching off does not matter.
                                           CanAddCase{"Quorla", "x", false, true}));

TEST(DictionarySummary, readsSavedCount)
{
    EXPECT_EQ(DictionaryPresenter::summaryText(0), QStringLiteral("0 saved"));
    EXPECT_EQ(DictionaryPresenter::summaryText(1), QStringLiteral("1 saved"));
    EXPECT_EQ(DictionaryPresenter::summaryText(2), QStringLiteral("2 saved"));
}

TEST(DictionaryPresenter, emptiesTheDraftsOnlyWhenTheModelTakesTheEntry)
{
    ModelFixture fixture;
    AppModel &model = fixture.makeModel();
    DictionaryPresenter presenter;
    presenter.setModelObject(&model);
    presenter.setUsesReplacement(true);
    presenter.setTermDraft(QStringLiteral("kwor la"));
    presenter.setReplacementDraft(QStringLiteral("Quorla"));
    ASSERT_TRUE(presenter.canAddTerm());

    QSignalSpy added(&presenter, &DictionaryPresenter::termAdded);

    // Taken: both fields empty for the next entry.
    presenter.addTerm();
    EXPECT_TRUE(presenter.termDraft().isEmpty());
    EXPECT_TRUE(presenter.replacementDraft().isEmpty());
    EXPECT_EQ(added.count(), 1);

    // The same entry again is refused as a duplicate, and the fields keep it.
    presenter.setTermDraft(QStringLiteral("kwor la"));
    presenter.setReplacementDraft(QStringLiteral("Quorla"));
    presenter.addTerm();
    EXPECT_EQ(presenter.termDraft(), QStringLiteral("kwor la"));
    EXPECT_EQ(presenter.replacementDraft(), QStringLiteral("Quorla"));
    EXPECT_EQ(added.count(), 1);
}

TEST(DictionaryPresenter, addsNothingWithoutAModelOrText)
{
    DictionaryPresenter presenter;
    presenter.setTermDraft(QStringLiteral("Quorla"));
    presenter.addTerm();
    presenter.removeEntry(3);
    EXPECT_EQ(presenter.termDraft(), QStringLiteral("Quorla"));
    EXPECT_EQ(presenter.summaryText(), QStringLiteral("0 saved"));
}

} // namespace
