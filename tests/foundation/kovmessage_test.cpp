// The log files, as a process leaves them behind.
#include <KOVDoaHandle/foundation/kovmessage.h>

#include <gtest/gtest.h>

#include <QtCore/QByteArray>
#include <QtCore/QDate>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <map>
#include <ostream>
#include <string>

namespace {

// 2024-01-02 03:04:05 UTC.
const char january2[] = "1704164645";

class LogFiles : public ::testing::Test
{
protected:
    struct Outcome
    {
        QProcess::ExitStatus status;
        int code;
        QByteArray printed;
    };

    // Runs the helper program in this test's folder; `zone` is the local time zone.
    Outcome run(const QStringList& steps, const char* zone = "UTC")
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TZ"), QLatin1String(zone));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(KOVDOA_LOG_WRITER), steps);
        EXPECT_TRUE(process.waitForFinished(60000));
        return {process.exitStatus(), process.exitCode(), process.readAll()};
    }

    void runSilently(const QStringList& steps, const char* zone = "UTC")
    {
        const Outcome outcome = run(steps, zone);
        EXPECT_EQ(outcome.status, QProcess::NormalExit);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.printed.toStdString(), "");
    }

    QStringList logNames() const
    {
        return QDir(folder.filePath(QStringLiteral("log"))).entryList(QDir::Files);
    }

    std::string contentOf(const QString& path) const
    {
        QFile file(folder.filePath(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(no such file)";
    }

    // What was written on 2024-01-02.
    std::string january2Log() const { return contentOf(QStringLiteral("log/log-2024-01-02.txt")); }

    QTemporaryDir folder;
};

TEST_F(LogFiles, HoldOneLineForAMessageOfTheFormatThatToolsLookFor)
{
    runSilently({"clock", january2, "init", "message", "0", "src/x/kovthread", "42", "start"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(kovthread) Line(42) start\r\n");
    EXPECT_EQ(logNames(), QStringList{"log-2024-01-02.txt"});
}

struct Level
{
    std::string name;
    int type;
    std::string word;
};

void PrintTo(const Level& level, std::ostream* out)
{
    *out << level.name;
}

class LogLevels : public LogFiles, public ::testing::WithParamInterface<Level>
{
};

TEST_P(LogLevels, BeginTheLineWithTheirWord)
{
    runSilently({"clock", january2, "init", "message", QString::number(GetParam().type), "a", "1", "text"});

    EXPECT_EQ(january2Log(), GetParam().word + "2024-01-02 03:04:05 Flie(a) Line(1) text\r\n");
}

INSTANTIATE_TEST_SUITE_P(Types, LogLevels,
                         ::testing::Values(Level{"Debug", QtDebugMsg, "Debug:"},
                                           Level{"Warning", QtWarningMsg, "Warning:"},
                                           Level{"Critical", QtCriticalMsg, "Critical:"},
                                           Level{"Fatal", QtFatalMsg, "Fatal:"},
                                           Level{"Info", QtInfoMsg, "Info:"}, Level{"UnknownAbove", 5, ""},
                                           Level{"UnknownFarAbove", 77, ""}, Level{"UnknownBelow", -1, ""}),
                         [](const auto& test) { return test.param.name; });

TEST_F(LogFiles, NameOnlyTheLastSectionOfTheSourcePath)
{
    runSilently({"clock", january2, "init", "message", "0", "/a/b/", "1", "x", "message", "0", "-", "2", "y",
                 "message", "0", "C:\\a\\b.cpp", "-3", "z"});

    EXPECT_EQ(january2Log(),
              "Debug:2024-01-02 03:04:05 Flie() Line(1) x\r\n"
              "Debug:2024-01-02 03:04:05 Flie() Line(2) y\r\n"
              "Debug:2024-01-02 03:04:05 Flie(C:\\a\\b.cpp) Line(-3) z\r\n");
}

TEST_F(LogFiles, KeepPercentSignsAndPlaceholdersOfATextAsTheyAre)
{
    runSilently({"clock", january2, "init", "message", "0", "%1", "7", "100% of %1, %2, %s and %n"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(%1) Line(7) 100% of %1, %2, %s and %n\r\n");
}

TEST_F(LogFiles, KeepTheLettersOfATextInTheCodecOfTheLocale)
{
    runSilently({"clock", january2, "init", "message", "0", "a", "7", "Pegel über −3 dB"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(a) Line(7) Pegel über −3 dB\r\n");
}

TEST_F(LogFiles, ReceiveTheMacrosOfTheFrameworkOnceLoggingIsOn)
{
    runSilently(
        {"clock", january2, "init", "debug", "one", "warning", "two", "critical", "three", "info", "four"});

    const std::string log = january2Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4);
    const std::size_t one = log.find("Debug:2024-01-02 03:04:05 Flie(");
    const std::size_t two = log.find("\r\nWarning:2024-01-02 03:04:05 Flie(");
    const std::size_t three = log.find("\r\nCritical:2024-01-02 03:04:05 Flie(");
    const std::size_t four = log.find("\r\nInfo:2024-01-02 03:04:05 Flie(");
    EXPECT_EQ(one, 0U);
    EXPECT_TRUE(one < two && two < three && three < four && four != std::string::npos) << log;
}

TEST_F(LogFiles, HoldAFatalMessageBeforeTheFrameworkEndsTheProcess)
{
    const Outcome outcome = run({"clock", january2, "init", "fatal", "the end", "debug", "never"});

    EXPECT_TRUE(outcome.status == QProcess::CrashExit || outcome.code != 0);
    EXPECT_EQ(january2Log().substr(0, 26), "Fatal:2024-01-02 03:04:05 ");
    EXPECT_EQ(january2Log().find("never"), std::string::npos);
}

TEST_F(LogFiles, ChangeAtLocalMidnight)
{
    // 2024-01-01 18:59:59 and 19:00:00 UTC, in a zone five hours ahead.
    runSilently({"init", "clock", "1704135599", "message", "0", "a", "1", "old", "clock", "1704135600",
                 "message", "0", "a", "2", "new"},
                "EAST-5");

    EXPECT_EQ(contentOf("log/log-2024-01-01.txt"), "Debug:2024-01-01 23:59:59 Flie(a) Line(1) old\r\n");
    EXPECT_EQ(january2Log(), "Debug:2024-01-02 00:00:00 Flie(a) Line(2) new\r\n");
}

TEST_F(LogFiles, AreNamedAfterTheCurrentDateWhenTheClockIsLeftAlone)
{
    const auto nameOf = [](const QDate& date) { return "log-" + date.toString("yyyy-MM-dd") + ".txt"; };
    const QDate before = QDateTime::currentDateTimeUtc().date();
    runSilently({"init", "message", "0", "a", "1", "x"});
    const QDate after = QDateTime::currentDateTimeUtc().date();

    EXPECT_TRUE(logNames() == QStringList{nameOf(before)} || logNames() == QStringList{nameOf(after)})
        << logNames().join(' ').toStdString();
}

TEST_F(LogFiles, GrowFromRunToRun)
{
    runSilently({"clock", january2, "init", "message", "0", "a", "1", "first"});
    runSilently({"clock", january2, "init", "message", "0", "a", "2", "second"});

    EXPECT_EQ(january2Log(),
              "Debug:2024-01-02 03:04:05 Flie(a) Line(1) first\r\n"
              "Debug:2024-01-02 03:04:05 Flie(a) Line(2) second\r\n");
}

TEST_F(LogFiles, ReceiveEachMessageOnceWhenLoggingIsSwitchedOnTwice)
{
    runSilently({"clock", january2, "init", "init", "engine", "a", "1", "once"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(a) Line(1) once\r\n");
}

TEST_F(LogFiles, LoseMessagesSilentlyWhileTheFolderIsMissing)
{
    runSilently({"clock", january2, "init", "remove-folder", "debug", "lost", "init", "message", "0", "a",
                 "1", "kept"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(a) Line(1) kept\r\n");
}

TEST_F(LogFiles, AreNotMadeByAMessageAlone)
{
    runSilently({"message", "0", "a", "1", "x"});

    EXPECT_FALSE(QDir(folder.path()).exists("log"));
}

TEST_F(LogFiles, ThatCannotBeOpenedLoseTheLineSilently)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath("log/log-2024-01-02.txt"));

    runSilently({"clock", january2, "init", "debug", "lost"});

    EXPECT_TRUE(QDir(folder.filePath("log/log-2024-01-02.txt")).isEmpty());
}

TEST_F(LogFiles, WhoseFolderCannotBeMadeLoseTheLineSilently)
{
    QFile inTheWay(folder.filePath("log"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();

    runSilently({"init", "debug", "lost"});

    EXPECT_EQ(contentOf("log"), "");
}

TEST_F(LogFiles, LieBesideTheWorkingDirectoryOfEachMessage)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath("elsewhere/log"));

    runSilently({"clock", january2, "init", "message", "0", "a", "1", "here", "chdir", "elsewhere", "message",
                 "0", "a", "2", "there"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(a) Line(1) here\r\n");
    EXPECT_EQ(contentOf("elsewhere/log/log-2024-01-02.txt"),
              "Debug:2024-01-02 03:04:05 Flie(a) Line(2) there\r\n");
}

TEST_F(LogFiles, ReceiveTheEnginesMessagesAsDebugMessages)
{
    runSilently({"clock", january2, "init", "engine", "engine/beam", "9", "array is ready"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(beam) Line(9) array is ready\r\n");
}

TEST_F(LogFiles, ReceiveWhatTheEngineReportsItself)
{
    runSilently({"clock", january2, "init", "negative-size"});

    const std::string log = january2Log();
    EXPECT_EQ(log.substr(0, 47), "Debug:2024-01-02 03:04:05 Flie(containers) Line");
    EXPECT_NE(log.find("a negative size was asked for"), std::string::npos);
}

TEST_F(LogFiles, TakeTheEnginesMessageAsAFormat)
{
    // A doubled percent sign is the one conversion that needs no argument.
    runSilently({"clock", january2, "init", "engine", "beam", "9", "gain 50%% set"});

    EXPECT_EQ(january2Log(), "Debug:2024-01-02 03:04:05 Flie(beam) Line(9) gain 50% set\r\n");
}

TEST_F(LogFiles, KeepTheLinesOfSeveralThreadsWhole)
{
    // Lines so long that each takes several writes; the system itself keeps a single one whole.
    const int threads = 4;
    const int lines = 25;
    runSilently({"clock", january2, "init", "threads", QString::number(threads), QString::number(lines)});

    const QStringList written = QString::fromStdString(january2Log()).split("\r\n", Qt::SkipEmptyParts);
    ASSERT_EQ(written.size(), threads * lines);
    std::map<int, int> nextLine;
    for (const QString& line : written) {
        ASSERT_TRUE(line.startsWith("Debug:2024-01-02 03:04:05 Flie(")) << line.left(80).toStdString();
        const QStringList fields = line.section(' ', -1).split(':');
        ASSERT_EQ(fields.size(), 3) << line.left(80).toStdString();
        const int thread = fields[0].toInt();
        EXPECT_EQ(fields[1].toInt(), nextLine[thread]++) << line.left(80).toStdString();
        EXPECT_TRUE(fields[2] == QString(50000, QLatin1Char(static_cast<char>('a' + thread))))
            << line.left(80).toStdString();
    }
}

TEST_F(LogFiles, HoldWholeLinesOnlyWhileTheirFolderComesAndGoesUnderSeveralThreads)
{
    const int threads = 4;
    const int lines = 300;
    runSilently({"clock", january2, "init", "storm", QString::number(threads), QString::number(lines), "init",
                 "message", "0", "a", "1", "0:the end:" + QString(20000, 'a')});

    const QStringList written = QString::fromStdString(january2Log()).split("\r\n", Qt::SkipEmptyParts);
    ASSERT_GE(written.size(), 1);
    ASSERT_LE(written.size(), threads * lines + 1);
    for (const QString& line : written) {
        ASSERT_TRUE(line.startsWith("Debug:2024-01-02 03:04:05 Flie(")) << line.left(80).toStdString();
        const QString filling = line.section(':', -1);
        EXPECT_EQ(filling.size(), 20000) << line.left(80).toStdString();
        EXPECT_EQ(filling.count(filling[0]), 20000) << line.left(80).toStdString();
    }
    EXPECT_TRUE(written.last().contains("the end"));
}

}  // namespace
