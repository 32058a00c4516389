// Signals and model files for the tests of the discharge analysis.
#ifndef KOVDOA_TESTS_PRPDSIGNALS_H
#define KOVDOA_TESTS_PRPDSIGNALS_H

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace prpdsignals {

// A stream of 96 kHz: noise, and bursts at one or several phases of a mains cycle.
class Stream
{
public:
    Stream(double mainsHz, unsigned seed) : m_cycle(96000.0 / mainsHz), m_random(seed) {}

    // Phases of the bursts in the cycle, 0 ... 1; how much they scatter; peak and noise amplitude.
    std::vector<double> phases;
    double scatter = 0.01;
    float peak = 0.3F;
    float noise = 0.002F;
    double drift = 0.0;  // of the mains frequency, relative

    std::vector<float> next(int n)
    {
        std::normal_distribution<float> normal(0.0F, 1.0F);
        std::normal_distribution<double> jitter(0.0, 1.0);
        std::vector<float> samples;
        for (int i = 0; i < n; ++i) {
            m_phase += (1.0 + drift) / m_cycle;
            if (m_phase >= 1.0) {
                m_phase -= 1.0;
                m_due = phases;
                for (double& phase : m_due) {
                    phase += scatter * jitter(m_random);
                }
            }
            for (double& due : m_due) {
                if (m_phase >= due) {
                    m_burst = peak;
                    due = 2.0;
                }
            }
            // A decaying tone of 40 kHz.
            m_tone += 2.0 * std::numbers::pi * 40000.0 / 96000.0;
            samples.push_back(noise * normal(m_random) + m_burst * static_cast<float>(std::sin(m_tone)));
            m_burst *= 0.97F;
        }
        return samples;
    }

private:
    double m_cycle;
    std::mt19937 m_random;
    double m_phase = 0.0;
    double m_tone = 0.0;
    float m_burst = 0.0F;
    std::vector<double> m_due;
};

// A folder with a model file.
class ModelFolder
{
public:
    explicit ModelFolder(const std::string& secondModel = {}, const std::string& firstModel = {})
    {
        write("SVM1.txt", firstModel);
        write("SVM2.txt", secondModel);
    }

    std::string path() const { return m_folder.path().toStdString(); }

private:
    void write(const char* name, const std::string& text)
    {
        if (!text.empty()) {
            QFile file(m_folder.filePath(QString::fromLatin1(name)));
            if (file.open(QIODevice::WriteOnly)) {
                file.write(text.data(), static_cast<qint64>(text.size()));
            }
        }
    }

    QTemporaryDir m_folder;
};

}  // namespace prpdsignals

#endif
