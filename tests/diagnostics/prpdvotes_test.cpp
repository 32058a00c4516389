// Counting votes and writing the verdict.
#include <KOVDoaHandle/diagnostics/prpdvotes_p.h>

#include <gtest/gtest.h>

#include <QtCore/QString>

namespace {

using KOVPrivate::Discharge;
using KOVPrivate::PrpdVotes;

void cast(PrpdVotes& votes, Discharge vote, int times)
{
    for (int i = 0; i < times; ++i) {
        votes.cast(vote);
    }
}

TEST(PrpdVotes, PublishTheSharesOfAllVotes)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 10);
    cast(votes, Discharge::AlongSurface, 5);
    cast(votes, Discharge::Suspension, 20);
    cast(votes, Discharge::Noise, 5);

    votes.publish(result);

    EXPECT_EQ(result.coronaPercent, 25.0F);
    EXPECT_EQ(result.alongSurfacePercent, 12.5F);
    EXPECT_EQ(result.suspensionPercent, 50.0F);
    EXPECT_EQ(result.coronaType, 1);
    EXPECT_EQ(result.alongSurfaceType, 2);
    EXPECT_EQ(result.suspensionType, 3);
}

TEST(PrpdVotes, LeaveTheRecordAloneBelowTwentySixVotes)
{
    PrpdVotes votes;
    PRPDResult result{};
    result.suspensionPercent = 7.0F;
    cast(votes, Discharge::Corona, 25);

    votes.publish(result);

    EXPECT_EQ(result.coronaPercent, 0.0F);
    EXPECT_EQ(result.suspensionPercent, 7.0F);
    EXPECT_TRUE(votes.text().isEmpty());
}

TEST(PrpdVotes, WriteTheVerdictWithThePercentagesAsGeneralNumbers)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 1);
    cast(votes, Discharge::AlongSurface, 9);
    cast(votes, Discharge::Suspension, 20);

    votes.publish(result);

    const QString expected = QStringLiteral("电晕放电") + QStringLiteral(" %1").arg(100.0F / 30.0F) +
                             QStringLiteral("%\r\n沿面放电") + QStringLiteral(" %1").arg(30.0F) +
                             QStringLiteral("%\r\n悬浮放电") + QStringLiteral(" %1").arg(2000.0F / 30.0F) +
                             QStringLiteral("%");
    EXPECT_EQ(votes.text(), expected);
    EXPECT_EQ(votes.text(), QStringLiteral("电晕放电 3.33333%\r\n沿面放电 30%\r\n悬浮放电 66.6667%"));
}

TEST(PrpdVotes, WriteSmallSharesAsQtDoes)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 1);
    cast(votes, Discharge::Noise, 3000000);

    votes.publish(result);

    EXPECT_TRUE(votes.text().startsWith(QStringLiteral("电晕放电 %1%").arg(result.coronaPercent)))
        << votes.text().toStdString();
}

TEST(PrpdVotes, RenewTheVerdictInPlace)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 26);
    votes.publish(result);
    const QChar* const memory = votes.text().constData();

    cast(votes, Discharge::Noise, 1);
    votes.publish(result);

    EXPECT_EQ(votes.text().constData(), memory);
    EXPECT_TRUE(votes.text().contains(QStringLiteral("96.2963%")));
}

TEST(PrpdVotes, StartAgainAfterAReset)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 26);
    votes.publish(result);

    votes.reset();
    EXPECT_TRUE(votes.text().isEmpty());
    cast(votes, Discharge::Suspension, 26);
    votes.publish(result);

    EXPECT_EQ(result.coronaPercent, 0.0F);
    EXPECT_EQ(result.suspensionPercent, 100.0F);
}

TEST(PrpdVotes, CountBeyondWhatAnIntHoldsTimesAHundred)
{
    PrpdVotes votes;
    PRPDResult result{};
    cast(votes, Discharge::Corona, 22000000);

    votes.publish(result);

    EXPECT_EQ(result.coronaPercent, 100.0F);
}

}  // namespace
