#include <KOVDoaHandle/diagnostics/prpdvotes_p.h>

#include <QtCore/QCoreApplication>

#include <charconv>
#include <numeric>

namespace KOVPrivate {

namespace {

constexpr int textCapacity = 128;
// Significant digits of the percentages in the text.
constexpr int textDigits = 6;

QString name(const char* text)
{
    return QCoreApplication::translate("KOVPrpdProcess", text);
}

void appendPercent(QString& text, float percent)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<double>(percent),
                                   std::chars_format::general, textDigits)
                         .ptr;
    text.append(QLatin1Char(' '));
    text.append(QLatin1String(digits, static_cast<int>(end - digits)));
    text.append(QLatin1Char('%'));
}

}  // namespace

PRPDResult emptyPrpdResult()
{
    PRPDResult result{};
    result.coronaType = 1;
    result.alongSurfaceType = 2;
    result.suspensionType = 3;
    return result;
}

PrpdVotes::PrpdVotes() : m_names{name("电晕放电"), name("沿面放电"), name("悬浮放电")}
{
    m_text.reserve(textCapacity);
}

void PrpdVotes::cast(Discharge vote)
{
    ++m_votes[static_cast<std::size_t>(vote)];
}

// The product is a whole number and the quotient single precision.
float PrpdVotes::percentOf(Discharge type) const
{
    const std::int64_t all = std::accumulate(m_votes.begin(), m_votes.end(), std::int64_t{0});
    return static_cast<float>(m_votes[static_cast<std::size_t>(type)] * 100) / static_cast<float>(all);
}

void PrpdVotes::publish(PRPDResult& result)
{
    if (std::accumulate(m_votes.begin(), m_votes.end(), std::int64_t{0}) < fewestVotes) {
        return;
    }
    result.coronaPercent = percentOf(Discharge::Corona);
    result.alongSurfacePercent = percentOf(Discharge::AlongSurface);
    result.suspensionPercent = percentOf(Discharge::Suspension);
    result.coronaType = 1;
    result.alongSurfaceType = 2;
    result.suspensionType = 3;
    writeText(result);
}

void PrpdVotes::writeText(const PRPDResult& result)
{
    m_text.resize(0);
    m_text.append(m_names[0]);
    appendPercent(m_text, result.coronaPercent);
    m_text.append(QLatin1String("\r\n"));
    m_text.append(m_names[1]);
    appendPercent(m_text, result.alongSurfacePercent);
    m_text.append(QLatin1String("\r\n"));
    m_text.append(m_names[2]);
    appendPercent(m_text, result.suspensionPercent);
}

void PrpdVotes::reset()
{
    m_votes.fill(0);
    m_text.resize(0);
}

}  // namespace KOVPrivate
