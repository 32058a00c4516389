// Model files, whole and broken, and what is decided by them.
#include <KOVDoaHandle/diagnostics/supportvectormodel_p.h>

#include <gtest/gtest.h>

#include <QtCore/qlogging.h>
#include <QtCore/QTemporaryDir>

#include <array>
#include <cmath>
#include <fstream>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "prpdoracle.h"
#include "tests/support/bits.h"

namespace {

using KOVPrivate::SupportVectorModel;
using testsupport::sameBits;

struct Reading
{
    SupportVectorModel model;
    std::string problem;
};

Reading readText(const std::string& text)
{
    std::istringstream stream(text);
    Reading reading;
    reading.model = SupportVectorModel::read(stream, reading.problem);
    return reading;
}

std::vector<std::string> logged;

void keepMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    logged.push_back(text.toStdString());
}

const std::array<float, 4> origin{};

TEST(SupportVectorModel, DecidesByTheWeightedNearnessOfItsVectors)
{
    const Reading reading = readText("2 2\n0.5 0.25\n1 -2\n0 0\n1 1\n");

    EXPECT_EQ(reading.problem, "");
    EXPECT_EQ(reading.model.dimension(), 2);
    EXPECT_EQ(reading.model.vectorCount(), 2);
    EXPECT_NEAR(reading.model.decision(origin.data()), 1.0 - 2.0 * std::exp(-1.0) - 0.25, 1e-6);
}

TEST(SupportVectorModel, AgreesWithThePlainSumBitForBit)
{
    std::mt19937 random(31);
    std::normal_distribution<float> normal(0.0F, 1.0F);
    prpdoracle::Model plain{4, 0.37F, 0.11F, {}, {}};
    std::ostringstream text;
    text.precision(9);
    text << "4 300 0.37 0.11\n";
    for (int i = 0; i < 300; ++i) {
        plain.coefficients.push_back(normal(random));
        text << plain.coefficients.back() << '\n';
    }
    for (int i = 0; i < 300; ++i) {
        plain.vectors.push_back({normal(random), normal(random), normal(random), normal(random)});
        for (const float element : plain.vectors.back()) {
            text << element << '\t';
        }
        text << '\n';
    }
    const Reading reading = readText(text.str());

    for (int i = 0; i < 100; ++i) {
        const std::vector<float> x{normal(random), normal(random), normal(random), normal(random)};
        ASSERT_TRUE(sameBits(prpdoracle::decision(plain, x), reading.model.decision(x.data())));
    }
}

TEST(SupportVectorModel, CutsTheFractionsOffDimensionAndCount)
{
    const Reading reading = readText("1.9 2.7 1 0 1 1 0 0");

    EXPECT_EQ(reading.model.dimension(), 1);
    EXPECT_EQ(reading.model.vectorCount(), 2);
    EXPECT_EQ(reading.model.decision(origin.data()), 2.0F);
}

TEST(SupportVectorModel, TakesMissingNumbersOfItsVectorsAsZero)
{
    const Reading reading = readText("2 2 1 0 1 1 0 0 0");

    EXPECT_EQ(reading.model.decision(origin.data()), 2.0F);
    EXPECT_NE(reading.problem, "");
}

TEST(SupportVectorModel, LeavesOutVectorsWithoutACoefficient)
{
    const Reading reading = readText("1 1000000000 1 0.5 1 1 1");

    EXPECT_EQ(reading.model.vectorCount(), 3);
    EXPECT_EQ(reading.model.decision(origin.data()), 2.5F);
    EXPECT_NE(reading.problem, "");
}

TEST(SupportVectorModel, IsNotChangedByNumbersAfterItsLastVector)
{
    const Reading exact = readText("1 2 1 0 1 1 0.5 0.25");

    const Reading longer = readText("1 2 1 0 1 1 0.5 0.25 9 9 9 9 9 word 9");

    EXPECT_EQ(longer.problem, "");
    EXPECT_TRUE(sameBits(exact.model.decision(origin.data()), longer.model.decision(origin.data())));
}

std::string manyVectors(int count)
{
    std::ostringstream text;
    text << "4 " << count << " 0 0\n";
    for (int i = 0; i < count; ++i) {
        text << "1\n";
    }
    for (int i = 0; i < count; ++i) {
        text << "1 2 3 4\n";
    }
    return text.str();
}

TEST(SupportVectorModel, UsesAThousandAndTwentyFourVectors)
{
    const Reading reading = readText(manyVectors(1024));

    EXPECT_EQ(reading.problem, "");
    EXPECT_EQ(reading.model.decision(origin.data()), 1024.0F);
}

TEST(SupportVectorModel, ReadsOverVectorsBeyondThese)
{
    const Reading reading = readText(manyVectors(5000));

    EXPECT_NE(reading.problem, "");
    EXPECT_EQ(reading.model.vectorCount(), 1024);
    EXPECT_EQ(reading.model.decision(origin.data()), 1024.0F);
}

struct Refused
{
    const char* text;
    const char* name;
};

class RefusedModels : public ::testing::TestWithParam<Refused>
{
};

TEST_P(RefusedModels, AreEmptyAndSaySo)
{
    const Reading reading = readText(GetParam().text);

    EXPECT_NE(reading.problem, "");
    EXPECT_EQ(reading.model.vectorCount(), 0);
    EXPECT_EQ(reading.model.decision(origin.data()), 0.0F);
}

INSTANTIATE_TEST_SUITE_P(
    Files, RefusedModels,
    ::testing::Values(Refused{"", "Empty"}, Refused{"  \n\t", "Blank"}, Refused{"hello", "Words"},
                      Refused{"4", "OnlyADimension"}, Refused{"4 2 0.5", "NoOffset"},
                      Refused{"-1 2 1 -5 1 1 0 0", "NegativeDimension"},
                      Refused{"5 1 1 -5 1 0 0 0 0 0", "MoreDimensionsThanFeatures"},
                      Refused{"1e9 1 1 -5 1 0", "HugeDimension"}, Refused{"1e30 1 1 -5 1", "AbsurdDimension"},
                      Refused{"nan 1 1 -5 1", "DimensionThatIsNoNumber"},
                      Refused{"4 nan 1 -5 1", "CountThatIsNoNumber"},
                      Refused{"4 inf 1 -5 1", "InfiniteCount"}, Refused{"4 -3 1 -5 1", "NegativeCount"},
                      Refused{"4 3e9 1 -5 1", "CountBeyondAnInt"},
                      Refused{"1e999 1 1 -5 1", "DimensionBeyondAFloat"}),
    [](const auto& refused) { return refused.param.name; });

TEST(SupportVectorModel, MayHaveNoDimensions)
{
    const Reading reading = readText("0 3 1 0.5 1 1 1 7 7 7");

    EXPECT_EQ(reading.problem, "");
    EXPECT_EQ(reading.model.decision(origin.data()), 2.5F);
}

TEST(SupportVectorModel, ReadsPointsAsDecimalPointsInEveryLocale)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));

    const Reading reading = readText("1 1 0.5 0.25 1.5 0");

    std::locale::global(before);
    EXPECT_EQ(reading.model.decision(origin.data()), 1.25F);
}

class ModelFiles : public ::testing::Test
{
protected:
    ModelFiles() : m_before(qInstallMessageHandler(keepMessage)) { logged.clear(); }
    ~ModelFiles() override { qInstallMessageHandler(m_before); }

    std::string file(const std::string& text) const
    {
        const std::string path = m_folder.filePath(QStringLiteral("model.txt")).toStdString();
        std::ofstream(path) << text;
        return path;
    }
    std::string folder() const { return m_folder.path().toStdString(); }

private:
    QTemporaryDir m_folder;
    QtMessageHandler m_before;
};

TEST_F(ModelFiles, MayBeMissingWithoutAWord)
{
    const SupportVectorModel model = SupportVectorModel::load(folder() + "/none.txt");

    EXPECT_EQ(model.vectorCount(), 0);
    EXPECT_EQ(model.decision(origin.data()), 0.0F);
    EXPECT_TRUE(logged.empty());
}

TEST_F(ModelFiles, GiveOneLineInTheLogWhenTheyAreBroken)
{
    const std::string path = file("4 2 garbage");

    SupportVectorModel::load(path);

    ASSERT_EQ(logged.size(), 1U);
    EXPECT_NE(logged[0].find(path), std::string::npos) << logged[0];
    EXPECT_NE(logged[0].find("breaks off"), std::string::npos) << logged[0];
}

TEST_F(ModelFiles, AreReadWithoutAWordWhenTheyAreWhole)
{
    const SupportVectorModel model = SupportVectorModel::load(file("1 1 1 0 1 0\n"));

    EXPECT_EQ(model.decision(origin.data()), 1.0F);
    EXPECT_TRUE(logged.empty());
}

TEST_F(ModelFiles, MayTurnOutToBeFolders)
{
    const SupportVectorModel model = SupportVectorModel::load(folder());

    EXPECT_EQ(model.vectorCount(), 0);
}

}  // namespace
