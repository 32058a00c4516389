// logwriter STEP...: carries out the steps in order, in the working directory it is started in. A process of its own
// because log files belong to a process; and because here the clock can be set.
//   init                          initLogging()
//   message TYPE FILE LINE TEXT   qtMessage() with that context; FILE "-" stands for a null pointer
//   debug|warning|critical|info|fatal TEXT   the framework's own macros
//   engine FILE LINE TEXT         doaMessage()
//   negative-size                 has the engine report something
//   threads COUNT LINES           COUNT threads, each of which writes LINES lines of more than 50,000 characters
//   storm COUNT LINES             COUNT threads, each of which writes LINES lines, while ./log is removed and logging
//                                 switched on again and again
//   clock SECONDS                 from now on it is that many seconds after 1970-01-01 00:00:00 UTC
//   chdir FOLDER                  changes the working directory
//   remove-folder                 removes ./log
// Exit status 2 for a step that is not in this list.
#include <sys/time.h>

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QtDebug>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include <KOVDoaHandle/api/library.h>
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovmessage.h>

namespace {

// Seconds since 1970 that the process is told it is; negative: the real time.
long fakeSeconds = -1;

}  // namespace

// Stands before the C library's own, so that the framework gets the time from here.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* now, void*) noexcept
{
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    now->tv_sec = fakeSeconds >= 0 ? fakeSeconds : time.tv_sec;
    now->tv_usec = fakeSeconds >= 0 ? 0 : time.tv_nsec / 1000;
    return 0;
}

namespace {

class Steps
{
public:
    Steps(int count, char** words) : m_words(words, words + count) {}

    bool empty() const { return m_words.empty(); }

    std::string next()
    {
        if (m_words.empty()) {
            std::exit(2);
        }
        std::string word = m_words.front();
        m_words.pop_front();
        return word;
    }

    int nextNumber() { return std::stoi(next()); }

private:
    std::deque<std::string> m_words;
};

void writeMessage(Steps& steps)
{
    const int type = steps.nextNumber();
    const std::string file = steps.next();
    const int line = steps.nextNumber();
    const std::string text = steps.next();
    const QMessageLogContext context(file == "-" ? nullptr : file.c_str(), line, "function", "default");
    qtMessage(static_cast<QtMsgType>(type), context, QString::fromStdString(text));
}

void writeEngineMessage(Steps& steps)
{
    const std::string file = steps.next();
    const int line = steps.nextNumber();
    const std::string text = steps.next();
    doaMessage(file.c_str(), line, "function", text.c_str());
}

void writeFromThreads(int threadCount, int lineCount)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread, lineCount] {
            const QString filling(50000, QLatin1Char(static_cast<char>('a' + thread)));
            for (int line = 0; line < lineCount; ++line) {
                qDebug("%d:%d:%s", thread, line, qPrintable(filling));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void writeInAStorm(int threadCount, int lineCount)
{
    std::atomic<int> writing{threadCount};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&writing, thread, lineCount] {
            const QString filling(20000, QLatin1Char(static_cast<char>('a' + thread)));
            for (int line = 0; line < lineCount; ++line) {
                qDebug("%d:%d:%s", thread, line, qPrintable(filling));
            }
            --writing;
        });
    }
    while (writing > 0) {
        QDir(QStringLiteral("log")).removeRecursively();
        initLogging();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void carryOut(const std::string& step, Steps& steps)
{
    if (step == "init") {
        initLogging();
    } else if (step == "message") {
        writeMessage(steps);
    } else if (step == "debug") {
        qDebug("%s", steps.next().c_str());
    } else if (step == "warning") {
        qWarning("%s", steps.next().c_str());
    } else if (step == "critical") {
        qCritical("%s", steps.next().c_str());
    } else if (step == "info") {
        qInfo("%s", steps.next().c_str());
    } else if (step == "fatal") {
        qFatal("%s", steps.next().c_str());
    } else if (step == "engine") {
        writeEngineMessage(steps);
    } else if (step == "negative-size") {
        destroy_vec_fp32(create_vec_fp32(-1));
    } else if (step == "threads") {
        const int threads = steps.nextNumber();
        writeFromThreads(threads, steps.nextNumber());
    } else if (step == "storm") {
        const int threads = steps.nextNumber();
        writeInAStorm(threads, steps.nextNumber());
    } else if (step == "clock") {
        fakeSeconds = std::stol(steps.next());
    } else if (step == "chdir") {
        QDir::setCurrent(QString::fromStdString(steps.next()));
    } else if (step == "remove-folder") {
        QDir(QStringLiteral("log")).removeRecursively();
    } else {
        std::exit(2);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    Steps steps(argc - 1, argv + 1);
    while (!steps.empty()) {
        carryOut(steps.next(), steps);
    }
    return 0;
}
