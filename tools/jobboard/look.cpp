#include "look.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>

#include <iterator>

namespace {

struct Colour
{
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};
constexpr Colour COLOURS[] = {
    { QPalette::Window, 0xeff0f1, 0x2a2d31 },
    { QPalette::WindowText, 0x1f2326, 0xe8eaed },
    { QPalette::Base, 0xffffff, 0x1d2023 },
    { QPalette::AlternateBase, 0xf5f7f9, 0x25282c },
    { QPalette::Text, 0x1f2326, 0xe8eaed },
    { QPalette::PlaceholderText, 0x5f666c, 0xa6adb4 },
    { QPalette::Button, 0xe6e8ea, 0x373b40 },
    { QPalette::ButtonText, 0x1f2326, 0xe8eaed },
    { QPalette::BrightText, 0xffffff, 0xffffff },
    { QPalette::ToolTipBase, 0xffffff, 0x373b40 },
    { QPalette::ToolTipText, 0x1f2326, 0xe8eaed },
    { QPalette::Highlight, 0x1f6fb2, 0x2a70ad },
    { QPalette::HighlightedText, 0xffffff, 0xffffff },
    { QPalette::Link, 0x1f6fb2, 0x6db3ee },
};
constexpr QRgb DISABLED_LIGHT = 0x8a9095;
constexpr QRgb DISABLED_DARK = 0x7b8187;

struct StateColour
{
    QRgb light;
    QRgb dark;
};
constexpr StateColour STATE_COLOURS[] = {
    // by state
    { 0x5f6870, 0xa2abb3 },
    { 0x8f5c00, 0xe8a317 },
    { 0x1f7a33, 0x57b865 },
};

QRgb chosen(QRgb light, QRgb dark, bool isDark) { return isDark ? dark : light; }

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() <
        palette.color(QPalette::WindowText).lightness();
}

// A style with more room between rows.
class AiryStyle : public QProxyStyle
{
public:
    AiryStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
        const QWidget *widget) const override
    {
        const QSize packed = QProxyStyle::sizeFromContents(type, option, size, widget);
        return type == CT_ItemViewItem ? packed + QSize(0, 5) : packed;
    }
};

}  // namespace

void setUpLook() { QApplication::setStyle(new AiryStyle); }

void setTheme(Theme theme)
{
    QApplication::setPalette(QPalette());  // the system's again
    const bool isSystemDark = isDark(QApplication::palette());
    QApplication::setPalette(
        paletteOf(theme == Theme::System ? isSystemDark : theme == Theme::Dark));
}

bool isDarkLook() { return isDark(QApplication::palette()); }

QPalette paletteOf(bool isDark)
{
    QPalette palette(QColor::fromRgb(chosen(COLOURS[6].light, COLOURS[6].dark, isDark)),
        QColor::fromRgb(chosen(COLOURS[0].light, COLOURS[0].dark, isDark)));
    for (const Colour &colour : COLOURS) {
        palette.setColor(colour.role, QColor::fromRgb(chosen(colour.light, colour.dark, isDark)));
    }
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText }) {
        palette.setColor(QPalette::Disabled, role,
            QColor::fromRgb(chosen(DISABLED_LIGHT, DISABLED_DARK, isDark)));
    }
    return palette;
}

QVariant stateColour(int state)
{
    if (state < 0 || size_t(state) >= std::size(STATE_COLOURS)) {
        return QVariant();
    }
    const StateColour &colour = STATE_COLOURS[state];
    return QColor::fromRgb(chosen(colour.light, colour.dark, isDarkLook()));
}
