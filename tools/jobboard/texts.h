#ifndef TEXTS_H
#define TEXTS_H

#include <QCollator>
#include <QHash>
#include <QString>

#include <vector>

/// A text in a Texts: the number of what it begins with, and the whole number that it ends with.
/// "Emma p. 12" and "Emma p. 106" share their beginning, as most names in a print shop do. Of a
/// time like "2024-03-06 06:00" the beginning is the year.
struct Label
{
    quint32 beginning = 0;  ///< 0 is the empty text
    /// 16 times the number, plus how many digits it has; of a time its eight digits, and 15 instead
    /// of their number; 0 without a number
    quint32 ending = 0;

    quint64 identity() const { return quint64(beginning) << 32 | ending; }
    bool isEmpty() const { return identity() == 0; }
    bool operator==(const Label &other) const { return identity() == other.identity(); }
};

/// Texts, each beginning kept once, in the order in which people expect them: case and accents
/// ignored, numbers by value.
class Texts
{
public:
    Texts();

    Label add(const QString &text);
    /// The label of a text that was added; the empty one otherwise.
    Label find(const QString &text) const;
    QString text(const Label &label) const;

    /// Ranks what was added since the last call.
    void rank();
    /// Labels compare like these numbers, since the last rank().
    quint64 order(const Label &label) const
    {
        return quint64(m_ranks[label.beginning]) << 32 | label.ending;
    }

    /// Forgets all beginnings but some, by their numbers; returns the new numbers of those, by the
    /// old ones.
    std::vector<quint32> keep(const std::vector<bool> &beginnings);

    /// Without case and accents.
    static QString folded(const QString &text);
    size_t beginnings() const { return m_beginnings.size(); }
    /// The folded beginning of all labels with that number.
    const QString &foldedBeginning(quint32 beginning) const { return m_folded[beginning]; }

private:
    quint32 addBeginning(const QString &text);

    QCollator m_collator;
    std::vector<QString> m_beginnings;
    std::vector<QString> m_folded;
    std::vector<QCollatorSortKey> m_keys;
    QHash<QString, quint32> m_numbers;
    std::vector<quint32> m_sorted;  // all that are ranked
    std::vector<quint32> m_ranks;
};

/// Finds labels that contain a text, without case and accents.
class TextSearch
{
public:
    /// An empty text is in every label. The texts are not owned and must outlive the search.
    TextSearch(const Texts &texts, const QString &text);

    bool isEmpty() const { return m_wanted.isEmpty(); }
    bool isIn(const Label &label);
    bool isIn(int number) const;
    bool isIn(const QString &text) const;

private:
    // What is known of a beginning: whether it has the text, or whether the ending or both together
    // decide.
    enum Answer : quint8 { Unknown, No, Yes, Ending, Whole };

    Answer answerOf(const QString &beginning) const;
    bool isInDigits(quint64 number, quint32 digits) const;

    const Texts &m_texts;
    const QString m_wanted;
    const bool m_endsLikeTime;
    QString m_head;  // of m_wanted, without the digits at its end
    int m_digits;  // how many these are
    quint64 m_number;  // and their value
    std::vector<Answer> m_answers;  // by beginning
};

#endif
