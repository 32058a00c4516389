#include "tools/support/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tools/support/interrupt.h"

namespace kovtools {

namespace {

constexpr int barWidth = 32;                            // characters
constexpr std::chrono::milliseconds drawInterval{100};  // often enough to look alive

}  // namespace

Progress::Progress(std::string title, int total, bool wanted)
    : m_title(std::move(title)),
      m_total(std::max(total, 1)),
      m_visible(wanted && isatty(STDERR_FILENO) == 1),
      m_nextDraw(std::chrono::steady_clock::now())
{
    draw();
}

Progress::~Progress()
{
    wipe();
}

void Progress::step()
{
    throwIfInterrupted();
    m_done = std::min(m_done + 1, m_total);
    draw();
}

void Progress::draw()
{
    const auto now = std::chrono::steady_clock::now();
    if (!m_visible || (now < m_nextDraw && m_done < m_total)) {
        return;
    }
    m_nextDraw = now + drawInterval;
    const auto filled = static_cast<std::size_t>(barWidth * static_cast<double>(m_done) / m_total);
    const std::string bar = std::string(filled, '#') + std::string(barWidth - filled, '.');
    std::fprintf(stderr, "\r%s [%s] %d/%d", m_title.c_str(), bar.c_str(), m_done, m_total);
    std::fflush(stderr);
}

void Progress::wipe()
{
    if (m_visible) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
}

}  // namespace kovtools
