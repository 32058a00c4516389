// The calibration table of the gas-leak mode, 100,000 lines: loading it as a host does, worker thread included. Peer:
// reading the file and splitting it at the same separators by hand, into one flat list of fields.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <chrono>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr int distanceCount = 200;
constexpr int levelCount = 500;

// 0.1 m to 20 m, 40.0 dB to 89.9 dB, a rate of five digits.
class TableFile
{
public:
    TableFile() : m_name(m_folder.filePath("table.txt").toStdString())
    {
        std::mt19937 random(9);
        std::uniform_real_distribution<double> rate(0.001, 10.0);
        QByteArray text;
        for (int distance = 1; distance <= distanceCount; ++distance) {
            for (int level = 0; level < levelCount; ++level) {
                text += QByteArray::number(40.0 + level / 10.0, 'f', 1) + ' ' +
                        QByteArray::number(distance / 10.0, 'f', 1) + ' ' +
                        QByteArray::number(rate(random), 'f', 5) + "\r\n";
            }
        }
        QFile file(QString::fromStdString(m_name));
        file.open(QIODevice::WriteOnly);
        file.write(text);
    }

    const std::string& name() const { return m_name; }

private:
    QTemporaryDir m_folder;
    std::string m_name;
};

template <typename Work>
void timed(benchmark::State& state, Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const auto end = std::chrono::steady_clock::now();
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
}

void loadOurs(benchmark::State& state)
{
    using Table = KOVGasleakProcessPrivate;
    const TableFile file;
    for ([[maybe_unused]] auto iteration : state) {
        // Nobody else is there, so the process can be made to look like a fresh one.
        Table::g_leakList = {};
        Table::g_isInited = false;
        timed(state, [&file] {
            const KOVGasleakProcess process(file.name().c_str());
            while (!Table::g_isInited) {
                std::this_thread::sleep_for(std::chrono::microseconds(20));
            }
        });
        if (Table::g_leakList.size() != distanceCount || Table::g_leakList[10].size() != levelCount) {
            state.SkipWithError("the table is not complete");
        }
    }
}

void loadPeer(benchmark::State& state)
{
    const TableFile file;
    for ([[maybe_unused]] auto iteration : state) {
        std::vector<std::string_view> fields;
        QByteArray text;
        timed(state, [&] {
            QFile device(QString::fromStdString(file.name()));
            device.open(QIODevice::ReadOnly);
            text = device.readAll();
            const char* begin = text.constData();
            const char* const end = begin + text.size();
            for (const char* at = begin; at != end; ++at) {
                if (*at == ' ' || *at == '\r' || *at == '\n') {
                    if (at != begin) {
                        fields.emplace_back(begin, static_cast<std::size_t>(at - begin));
                    }
                    begin = at + 1;
                }
            }
        });
        if (fields.size() != std::size_t{3} * distanceCount * levelCount) {
            state.SkipWithError("the fields are not complete");
        }
    }
}

}  // namespace

BENCHMARK(loadOurs)->Name("GasLeak/LoadTable/100000lines")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(loadPeer)
    ->Name("GasLeak/LoadTable/100000lines/peer")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
