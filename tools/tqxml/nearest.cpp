#include "nearest.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr int MAX_WORDS = 18;  // in a message
constexpr int MIN_PART = 3;  // characters of a word that may be a part of the one that was meant
constexpr int MAX_SHORT = 5;  // characters

// How many characters must be inserted, removed, replaced or swapped with their neighbours to make
// one text the start of the other, by the length of that start.
std::vector<int> distancesToStarts(const QString &a, const QString &b)
{
    const auto columns = size_t(b.size()) + 1;
    std::vector<std::vector<int>> rows(size_t(a.size()) + 1, std::vector<int>(columns));
    std::iota(rows[0].begin(), rows[0].end(), 0);
    for (int i = 1; i <= int(a.size()); ++i) {
        std::vector<int> &row = rows[size_t(i)];
        const std::vector<int> &before = rows[size_t(i) - 1];
        row[0] = i;
        for (int j = 1; j <= int(b.size()); ++j) {
            const auto at = size_t(j);
            const int cost = a.at(i - 1) == b.at(j - 1) ? 0 : 1;
            row[at] = std::min({ row[at - 1] + 1, before[at] + 1, before[at - 1] + cost });
            const bool isSwapped =
                i > 1 && j > 1 && a.at(i - 1) == b.at(j - 2) && a.at(i - 2) == b.at(j - 1);
            if (isSwapped) {
                row[at] = std::min(row[at], rows[size_t(i) - 2][at - 2] + 1);
            }
        }
    }
    return rows.back();
}

// How different a text is from one that was perhaps meant; 0 for its start. Every short text is
// near the start of something, so it is compared with the whole.
int difference(const QString &typed, const QString &known)
{
    if (typed.size() > 1 && known.startsWith(typed)) {
        return 0;
    }
    if (typed.size() >= MIN_PART && known.contains(typed)) {
        return 1;
    }
    const std::vector<int> distances = distancesToStarts(typed, known);
    return typed.size() > MAX_SHORT ? *std::min_element(distances.begin(), distances.end())
                                    : distances.back();
}

}  // namespace

QString nearest(const QString &word, const QStringList &words)
{
    const QString typed = word.toLower();
    QString best;
    int least = 1 + int(std::max<qsizetype>(1, typed.size() / 3));
    for (const QString &candidate : words) {
        const QString known = candidate.toLower();
        const int distance = difference(typed, known);
        if (distance < least && distance < int(known.size())) {
            least = distance;
            best = candidate;
        }
    }
    return best;
}

QString noSuch(const QString &what, const QString &word, const QStringList &words)
{
    const QString start = QStringLiteral("there is no %1 \"%2\"").arg(what, word);
    const QString meant = nearest(word, words);
    if (!meant.isNull()) {
        return start + QStringLiteral("; did you mean %1?").arg(meant);
    }
    return words.isEmpty() || words.size() > MAX_WORDS
        ? start
        : start + QStringLiteral("; there are ") + words.join(QStringLiteral(", "));
}
