// The log files: one line a message, the file chosen by the date of the message.
#include <KOVDoaHandle/foundation/kovmessage.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMessageLogger>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <mutex>

#include <KOVDoaHandle/foundation/engine/messagehook.h>

namespace {

const char logFolder[] = "./log/";

QLatin1String levelWord(QtMsgType type)
{
    switch (type) {
        case QtDebugMsg:
            return QLatin1String("Debug:");
        case QtWarningMsg:
            return QLatin1String("Warning:");
        case QtCriticalMsg:
            return QLatin1String("Critical:");
        case QtFatalMsg:
            return QLatin1String("Fatal:");
        case QtInfoMsg:
            return QLatin1String("Info:");
    }
    return QLatin1String("");
}

// Everything from building the line to closing the file happens under this lock, so that lines are written whole
// and in the order of their time stamps.
std::mutex& logMutex()
{
    static std::mutex mutex;
    return mutex;
}

}  // namespace

void initMessage()
{
    const QString folder = QLatin1String(logFolder);
    if (!QDir(folder).exists()) {
        QDir().mkdir(folder);
    }
    InstallDoaMessageHandler(doaMessage);
    qInstallMessageHandler(qtMessage);
}

void qtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const std::lock_guard lock(logMutex());

    const QDateTime now = QDateTime::currentDateTime();
    const QString fileName = QString::fromUtf8(context.file).section(QLatin1Char('/'), -1);

    QFile file(QLatin1String(logFolder) + QLatin1String("log-") +
               now.date().toString(QStringLiteral("yyyy-MM-dd")) + QLatin1String(".txt"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return;
    }
    QTextStream stream(&file);
    // Piece by piece rather than through QString::arg(), so that a "%1" in a text stays what it is.
    stream << levelWord(type) << now.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss ")) << "Flie(" << fileName
           << ") Line(" << context.line << ") " << text << "\r\n";
    stream.flush();
    file.close();
}

#if defined(__GNUC__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wformat-security"
#endif
void doaMessage(const char* file, int line, const char* function, const char* message)
{
    // The message is the format by agreement with the engine, which sends no percent signs.
    QMessageLogger(file, line, function, "default").debug(message);
}
#if defined(__GNUC__)
#    pragma GCC diagnostic pop
#endif
