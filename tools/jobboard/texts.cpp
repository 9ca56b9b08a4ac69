#include "texts.h"

#include <QLocale>

#include <algorithm>
#include <numeric>

namespace {

constexpr int MAX_DIGITS = 8;  // of an ending: with them it fits into 32 bits
constexpr quint32 DIGITS_MASK = 0xf;
constexpr int NUMBER_SHIFT = 4;
constexpr quint32 TIME = 15;  // in place of the number of digits
constexpr int YEAR_DIGITS = 4;

constexpr quint64 POWERS[] = { 1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000,
    1000000000, 10000000000 };  // of ten

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// How many digits the text ends with.
int endingDigits(const QString &text)
{
    int digits = 0;
    while (digits < text.size() && isDigit(text.at(text.size() - 1 - digits))) {
        ++digits;
    }
    return digits;
}

// Whether the text is a time: "2024-03-06 06:00".
bool isTime(const QString &text)
{
    const QLatin1String form("0000-00-00 00:00");
    if (text.size() != form.size()) {
        return false;
    }
    for (int i = 0; i < form.size(); ++i) {
        const bool isSame =
            form.at(i) == QLatin1Char('0') ? isDigit(text.at(i)) : text.at(i) == form.at(i);
        if (!isSame) {
            return false;
        }
    }
    return true;
}

// The ending that a text has; 0 for none.
quint32 endingOf(const QString &text)
{
    if (isTime(text)) {
        const QString digits = text.mid(5, 2) + text.mid(8, 2) + text.mid(11, 2) + text.mid(14, 2);
        return digits.toUInt() << NUMBER_SHIFT | TIME;
    }
    const int digits = endingDigits(text);
    if (digits == 0 || digits > MAX_DIGITS) {
        return 0;
    }
    return text.right(digits).toUInt() << NUMBER_SHIFT | quint32(digits);
}

bool isTime(quint32 ending) { return (ending & DIGITS_MASK) == TIME; }

QString endingText(quint32 ending)
{
    const int digits = isTime(ending) ? MAX_DIGITS : int(ending & DIGITS_MASK);
    const QString number =
        QString::number(ending >> NUMBER_SHIFT).rightJustified(digits, QLatin1Char('0'));
    if (!isTime(ending)) {
        return number;
    }
    return QStringLiteral("-%1-%2 %3:%4")
        .arg(number.mid(0, 2), number.mid(2, 2), number.mid(4, 2), number.mid(6, 2));
}

QString beginningOf(const QString &text, quint32 ending)
{
    return isTime(ending) ? text.left(YEAR_DIGITS)
                          : text.left(text.size() - int(ending & DIGITS_MASK));
}

// Whether the text may be a part of a time up to some place in it.
bool endsLikeTime(const QString &text)
{
    return !text.isEmpty() && (isDigit(text.back()) || QStringLiteral("-: ").contains(text.back()));
}

}  // namespace

Texts::Texts() : m_collator(QLocale(QLocale::English))
{
    m_collator.setNumericMode(true);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    addBeginning(QString());
    rank();
}

quint32 Texts::addBeginning(const QString &text)
{
    const auto found = m_numbers.constFind(text);
    if (found != m_numbers.constEnd()) {
        return *found;
    }
    const QString fold = folded(text);
    m_beginnings.push_back(text);
    m_folded.push_back(fold == text ? text : fold);
    m_keys.push_back(m_collator.sortKey(text));
    return m_numbers[text] = quint32(m_beginnings.size() - 1);
}

Label Texts::add(const QString &text)
{
    const quint32 ending = endingOf(text);
    return { addBeginning(beginningOf(text, ending)), ending };
}

Label Texts::find(const QString &text) const
{
    const quint32 ending = endingOf(text);
    const auto found = m_numbers.constFind(beginningOf(text, ending));
    return found == m_numbers.constEnd() ? Label() : Label { *found, ending };
}

QString Texts::text(const Label &label) const
{
    const QString &beginning = m_beginnings[label.beginning];
    return label.ending == 0 ? beginning : beginning + endingText(label.ending);
}

void Texts::rank()
{
    const auto isBefore = [this](quint32 a, quint32 b) {
        const int order = m_keys[a].compare(m_keys[b]);
        return order != 0 ? order < 0 : m_beginnings[a] < m_beginnings[b];
    };
    const auto known = std::ptrdiff_t(m_sorted.size());
    m_sorted.resize(m_beginnings.size());
    const auto added = m_sorted.begin() + known;
    std::iota(added, m_sorted.end(), quint32(known));
    std::sort(added, m_sorted.end(), isBefore);
    std::inplace_merge(m_sorted.begin(), added, m_sorted.end(), isBefore);
    m_ranks.resize(m_sorted.size());
    for (size_t i = 0; i < m_sorted.size(); ++i) {
        m_ranks[m_sorted[i]] = quint32(i);
    }
}

std::vector<quint32> Texts::keep(const std::vector<bool> &beginnings)
{
    Texts kept;
    std::vector<quint32> numbers(beginnings.size());
    for (size_t i = 0; i < beginnings.size(); ++i) {
        if (beginnings[i]) {
            numbers[i] = kept.addBeginning(m_beginnings[i]);
        }
    }
    kept.rank();
    *this = std::move(kept);
    return numbers;
}

QString Texts::folded(const QString &text)
{
    QString folded;
    for (const QChar c : text.normalized(QString::NormalizationForm_KD)) {
        if (c.category() != QChar::Mark_NonSpacing) {
            folded += c;
        }
    }
    return folded.toCaseFolded();
}

TextSearch::TextSearch(const Texts &texts, const QString &text)
    : m_texts(texts), m_wanted(Texts::folded(text)), m_endsLikeTime(endsLikeTime(m_wanted)),
      m_answers(texts.beginnings(), Unknown)
{
    const int digits = endingDigits(m_wanted);
    m_head = m_wanted.left(m_wanted.size() - digits);
    m_digits = digits;
    m_number = m_wanted.right(digits).toULongLong();  // 0 if there are too many
}

// Where a beginning without the text and an ending have it together, the text's last digits begin
// the ending, and what is before them ends the beginning. A text of digits only may be anywhere in
// the ending.
TextSearch::Answer TextSearch::answerOf(const QString &beginning) const
{
    if (beginning.contains(m_wanted)) {
        return Yes;
    }
    if (m_digits == 0) {
        return No;
    }
    if (!beginning.isEmpty() && isDigit(beginning.back())) {  // made of a special digit
        return Whole;
    }
    return beginning.endsWith(m_head) ? Ending : No;
}

bool TextSearch::isIn(const Label &label)
{
    const QString &beginning = m_texts.foldedBeginning(label.beginning);
    Answer &answer = m_answers[label.beginning];
    if (answer == Unknown) {
        answer = answerOf(beginning);
    }
    if (answer == Yes || label.ending == 0) {
        return answer == Yes;
    }
    if (isTime(label.ending)) {
        return m_endsLikeTime && QString(beginning + endingText(label.ending)).contains(m_wanted);
    }
    if (answer == No) {
        return false;
    }
    return answer == Whole ? QString(beginning + endingText(label.ending)).contains(m_wanted)
                           : isInDigits(label.ending >> NUMBER_SHIFT, label.ending & DIGITS_MASK);
}

// Whether a number of so many digits begins with the wanted ones or, if only digits are wanted,
// contains them.
bool TextSearch::isInDigits(quint64 number, quint32 digits) const
{
    if (m_digits > int(digits)) {
        return false;
    }
    const quint64 range = POWERS[m_digits];
    int places = int(digits) - m_digits;  // to the right of those that are compared
    do {
        if (number / POWERS[places] % range == m_number) {
            return true;
        }
    } while (m_head.isEmpty() && --places >= 0);
    return false;
}

bool TextSearch::isIn(const QString &text) const { return Texts::folded(text).contains(m_wanted); }

bool TextSearch::isIn(int number) const
{
    if (m_digits == 0 || (number >= 0 && !m_head.isEmpty())) {
        return false;
    }
    if (number < 0) {
        return QString::number(number).contains(m_wanted);
    }
    quint32 digits = 1;
    while (quint64(number) >= POWERS[digits]) {
        ++digits;
    }
    return isInDigits(quint64(number), digits);
}
