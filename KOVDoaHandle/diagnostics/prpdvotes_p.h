// The votes of the patterns since the last reset, and the verdict they add up to.
#ifndef KOVDOA_PRPDVOTES_P_H
#define KOVDOA_PRPDVOTES_P_H

#include <QtCore/QString>

#include <array>
#include <cstdint>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

namespace KOVPrivate {

enum class Discharge { Corona, AlongSurface, Suspension, Noise };

class PrpdVotes
{
public:
    // Below this number the verdict stays what it was.
    static constexpr int fewestVotes = 26;

    PrpdVotes();

    void cast(Discharge vote);

    // Once there are enough votes: writes the shares of the three types, in percent of all votes, noise
    // included, and the type numbers into the record, and makes the text. Does not allocate.
    void publish(PRPDResult& result);

    // Forgets all votes and the text.
    void reset();

    // One line for each type, as "<name> <percent>%", CR LF between them; empty until a verdict has been
    // published. The names go through Qt's translation; they are looked up when the object is made.
    const QString& text() const { return m_text; }

private:
    float percentOf(Discharge type) const;
    void writeText(const PRPDResult& result);

    std::array<std::int64_t, 4> m_votes{};
    std::array<QString, 3> m_names;
    QString m_text;
};

// A record without any result: zero but for the type numbers.
PRPDResult emptyPrpdResult();

}  // namespace KOVPrivate

#endif
