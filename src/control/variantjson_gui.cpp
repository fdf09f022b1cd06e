#include "control/variantjson_gui.h"

#include "control/jsonfields.h"

#include <QBrush>
#include <QBuffer>
#include <QColor>
#include <QCursor>
#include <QDataStream>
#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QKeySequence>
#include <QPalette>
#include <QPixmap>

#include <array>
#include <limits>
#include <optional>

namespace quendrix::variantjson {

using namespace jsonfields;

namespace {

constexpr const char* kColorModels[] = {"Invalid", "Rgb", "Hsv", "Cmyk", "Hsl", "ExtendedRgb"};
constexpr const char* kIconModes[] = {"Normal", "Disabled", "Active", "Selected"};
constexpr const char* kIconStates[] = {"On", "Off"};
// An icon's pictures: none wider or higher than this, and all of them together at most
// kIconPixels pixels.
constexpr int kIconSide = 2048;
constexpr qint64 kIconPixels = qint64(kIconSide) * kIconSide;

}  // namespace

bool guiAvailable() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

bool needsGui(int typeId) {
    switch (typeId) {
        case QMetaType::QColor:
        case QMetaType::QBrush:
        case QMetaType::QPalette:
        case QMetaType::QFont:
        case QMetaType::QCursor:
        case QMetaType::QIcon:
        case QMetaType::QKeySequence:
            return true;
        default:
            return false;
    }
}

QJsonValue colorToJson(const QColor& color) {
    if (!color.isValid()) return QJsonValue::Null;
    const QRgba64 wide = color.rgba64();
    const bool eightBit = color.spec() == QColor::Rgb && wide.red() % 257 == 0 &&
                          wide.green() % 257 == 0 && wide.blue() % 257 == 0 &&
                          wide.alpha() % 257 == 0;
    if (eightBit) return color.name(color.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
    // Another colour model or 16-bit components: the five raw components as QColor keeps them.
    QByteArray raw;
    {
        QDataStream out(&raw, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_6_4);
        out << color;
    }
    QDataStream in(raw);
    in.setVersion(QDataStream::Qt_6_4);
    qint8 model = 0;
    quint16 alpha = 0, c1 = 0, c2 = 0, c3 = 0, c4 = 0;
    in >> model >> alpha >> c1 >> c2 >> c3 >> c4;
    return QJsonObject{{QStringLiteral("model"), QLatin1String(kColorModels[model])},
                       {QStringLiteral("components"), QJsonArray{alpha, c1, c2, c3, c4}}};
}

bool readColor(const QJsonValue& json, QColor* out, QString& why) {
    if (json.isNull()) {
        *out = QColor();
        return true;
    }
    if (json.isString()) {
        const QColor color = QColor::fromString(json.toString());
        if (!color.isValid())
            return fail(why, QStringLiteral("%1 is not a colour").arg(shown(json)));
        *out = color;
        return true;
    }
    int model = 0;
    std::array<int, 5> components{};
    const auto modelName = [](const QJsonValue& json, int* out, QString& why) {
        *out = indexOf(kColorModels, json);
        return *out > 0 || fail(why, QStringLiteral("%1 is not a colour model").arg(shown(json)));
    };
    if (!Members(json, "a colour", {"model", "components"}, why)
             .required("model", &model, modelName)
             .required("components", &components, intsIn<5>(0, 0xFFFF))
             .ok())
        return false;
    // QColor reads its raw components only from a stream: this one holds checked fields.
    QByteArray raw;
    QDataStream stream(&raw, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    stream << qint8(model);
    for (int component : components)
        stream << quint16(component);
    QDataStream in(raw);
    in.setVersion(QDataStream::Qt_6_4);
    QColor color;
    in >> color;
    *out = color;
    return true;
}

bool brushToJson(const QBrush& brush, QJsonValue* json, QString& why) {
    if (brush.style() > Qt::DiagCrossPattern || !brush.transform().isIdentity())
        return fail(why,
                    QStringLiteral("gradient, texture and transformed brushes cannot be stored"));
    if (brush.style() == Qt::SolidPattern) {
        *json = colorToJson(brush.color());
    } else {
        *json = QJsonObject{{QStringLiteral("style"),
                             keyToJson(QMetaEnum::fromType<Qt::BrushStyle>(), brush.style())},
                            {QStringLiteral("color"), colorToJson(brush.color())}};
    }
    return true;
}

// A solid brush is written as its colour, any other pattern as {"style", "color"}.
bool readBrush(const QJsonValue& json, QBrush* out, QString& why) {
    if (!json.toObject().contains(QStringLiteral("style"))) {
        QColor color;
        if (!readColor(json, &color, why)) return false;
        *out = QBrush(color);
        return true;
    }
    int style = 0;
    QColor color(Qt::black);
    if (!Members(json, "a brush", {"style", "color"}, why)
             .required("style", &style, keyIn<Qt::BrushStyle>(Qt::NoBrush, Qt::DiagCrossPattern))
             .optional("color", &color, readColor)
             .ok())
        return false;
    *out = QBrush(color, Qt::BrushStyle(style));
    return true;
}

bool paletteToJson(const QPalette& palette, QJsonValue* json, QString& why) {
    const QMetaEnum groups = QMetaEnum::fromType<QPalette::ColorGroup>();
    const QMetaEnum roles = QMetaEnum::fromType<QPalette::ColorRole>();
    QJsonObject object;
    for (int group = 0; group < QPalette::NColorGroups; ++group) {
        QJsonObject brushes;
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            QJsonValue brush;
            if (!brushToJson(palette.brush(QPalette::ColorGroup(group), QPalette::ColorRole(role)),
                             &brush, why))
                return fail(why, QStringLiteral("%1 %2: %3")
                                     .arg(QLatin1String(groups.valueToKey(group)),
                                          QLatin1String(roles.valueToKey(role)), why));
            brushes.insert(QLatin1String(roles.valueToKey(role)), brush);
        }
        object.insert(QLatin1String(groups.valueToKey(group)), brushes);
    }
    object.insert(QStringLiteral("resolveMask"), unsignedToJson(palette.resolveMask()));
    *json = object;
    return true;
}

// A palette: a brush per colour group and role, and which of them were set. Groups and roles
// left out keep the application's.
bool readPalette(const QJsonValue& json, QPalette* out, QString& why) {
    if (!json.isObject()) return fail(why, QStringLiteral("%1 is not a palette").arg(shown(json)));
    const QJsonObject object = json.toObject();
    const QMetaEnum groups = QMetaEnum::fromType<QPalette::ColorGroup>();
    const QMetaEnum roles = QMetaEnum::fromType<QPalette::ColorRole>();
    QPalette palette;
    for (auto group = object.begin(); group != object.end(); ++group) {
        if (group.key() == u"resolveMask") continue;
        bool ok = false;
        const int groupIndex = groups.keyToValue(group.key().toLatin1().constData(), &ok);
        if (!ok || groupIndex < 0 || groupIndex >= QPalette::NColorGroups ||
            !group.value().isObject())
            return fail(
                why, QStringLiteral("%1 is not a colour group of brushes").arg(shown(group.key())));
        const QJsonObject brushes = group.value().toObject();
        for (auto role = brushes.begin(); role != brushes.end(); ++role) {
            const int roleIndex = roles.keyToValue(role.key().toLatin1().constData(), &ok);
            if (!ok || roleIndex < 0 || roleIndex >= QPalette::NColorRoles)
                return fail(why, QStringLiteral("%1 is not a colour role").arg(shown(role.key())));
            QBrush brush;
            if (!readBrush(role.value(), &brush, why))
                return fail(why, QStringLiteral("%1 %2: %3").arg(group.key(), role.key(), why));
            palette.setBrush(QPalette::ColorGroup(groupIndex), QPalette::ColorRole(roleIndex),
                             brush);
        }
    }
    if (object.contains(QStringLiteral("resolveMask"))) {
        quint64 mask = 0;
        if (!readUnsigned(object.value(QStringLiteral("resolveMask")),
                          std::numeric_limits<quint64>::max(), &mask, why))
            return fail(why, QStringLiteral("resolveMask: %1").arg(why));
        palette.setResolveMask(mask);
    }
    *out = palette;
    return true;
}

namespace {

// Whether matching the font looks at its pitch. A font whose pitch nobody set ignores it, and
// setting the pitch, even to what it is, makes it count.
bool pitchMatters(const QFont& font) {
    QFont probe = font;
    probe.setResolveMask(font.resolveMask() & ~QFont::FixedPitchResolved);  // else a no-op
    probe.setFixedPitch(font.fixedPitch());
    return probe == font;
}

}  // namespace

QJsonValue fontToJson(const QFont& font) {
    QJsonObject object{
        {QStringLiteral("families"), stringListToJson(font.families())},
        {QStringLiteral("styleName"), stringToJson(font.styleName())},
        {QStringLiteral("weight"), font.weight()},
        {QStringLiteral("style"), keyToJson(QMetaEnum::fromType<QFont::Style>(), font.style())},
        {QStringLiteral("underline"), font.underline()},
        {QStringLiteral("overline"), font.overline()},
        {QStringLiteral("strikeOut"), font.strikeOut()},
        {QStringLiteral("fixedPitch"),
         pitchMatters(font) ? QJsonValue(font.fixedPitch()) : QJsonValue()},
        {QStringLiteral("kerning"), font.kerning()},
        {QStringLiteral("capitalization"),
         keyToJson(QMetaEnum::fromType<QFont::Capitalization>(), font.capitalization())},
        {QStringLiteral("letterSpacingType"),
         keyToJson(QMetaEnum::fromType<QFont::SpacingType>(), font.letterSpacingType())},
        {QStringLiteral("letterSpacing"), doubleToJson(font.letterSpacing())},
        {QStringLiteral("wordSpacing"), doubleToJson(font.wordSpacing())},
        {QStringLiteral("stretch"), font.stretch()},
        {QStringLiteral("styleHint"),
         keyToJson(QMetaEnum::fromType<QFont::StyleHint>(), font.styleHint())},
        {QStringLiteral("styleStrategy"),
         keyToJson(QMetaEnum::fromType<QFont::StyleStrategy>(), font.styleStrategy())},
        {QStringLiteral("hintingPreference"),
         keyToJson(QMetaEnum::fromType<QFont::HintingPreference>(), font.hintingPreference())},
        {QStringLiteral("resolveMask"), qint64(font.resolveMask())}};
    if (font.pixelSize() > 0)
        object.insert(QStringLiteral("pixelSize"), font.pixelSize());
    else
        object.insert(QStringLiteral("pointSizeF"), doubleToJson(font.pointSizeF()));
    return object;
}

// A font: its attributes by name, which of them were set, and a fixed pitch of null where the
// font ignores its pitch. Attributes left out keep Qt's defaults.
bool readFont(const QJsonValue& json, QFont* out, QString& why) {
    const QFont defaults{QStringList()};
    QStringList families;
    QString styleName = defaults.styleName();
    double pointSize = defaults.pointSizeF(), letterSpacing = defaults.letterSpacing(),
           wordSpacing = defaults.wordSpacing();
    int pixelSize = defaults.pixelSize(), weight = defaults.weight(), style = defaults.style(),
        capitalization = defaults.capitalization(), spacingType = defaults.letterSpacingType(),
        stretch = defaults.stretch(), hint = defaults.styleHint(),
        strategy = defaults.styleStrategy(), hinting = defaults.hintingPreference();
    bool underline = defaults.underline(), overline = defaults.overline(),
         strikeOut = defaults.strikeOut(), kerning = defaults.kerning();
    std::optional<bool> fixedPitch;  // none: the pitch is ignored
    const auto pitch = [](const QJsonValue& json, std::optional<bool>* out, QString& why) {
        bool value = false;
        if (json.isNull()) return true;
        if (!readBool(json, &value, why)) return false;
        *out = value;
        return true;
    };
    qint64 mask = -1;
    const auto pointSizeIn = [](const QJsonValue& json, double* out, QString& why) {
        return readDouble(json, out, why) &&
               ((*out > 0 && *out <= 1e6) ||
                fail(why, QStringLiteral("%1 is not a point size").arg(shown(json))));
    };
    Members members(
        json, "a font",
        {"families", "styleName",      "pointSizeF",        "pixelSize",         "weight",
         "style",    "underline",      "overline",          "strikeOut",         "fixedPitch",
         "kerning",  "capitalization", "letterSpacingType", "letterSpacing",     "wordSpacing",
         "stretch",  "styleHint",      "styleStrategy",     "hintingPreference", "resolveMask"},
        why);
    if (members.has("pointSizeF") && members.has("pixelSize"))
        return fail(why, QStringLiteral("a font has a point size or a pixel size, not both"));
    if (!members.optional("families", &families, readStringList)
             .optional("styleName", &styleName, readString)
             .optional("pointSizeF", &pointSize, pointSizeIn)
             .optional("pixelSize", &pixelSize, intIn(1, 1000000))
             .optional("weight", &weight, intIn(1, 1000))
             .optional("style", &style, keyIn<QFont::Style>(0, 2))
             .optional("underline", &underline, readBool)
             .optional("overline", &overline, readBool)
             .optional("strikeOut", &strikeOut, readBool)
             .optional("fixedPitch", &fixedPitch, pitch)
             .optional("kerning", &kerning, readBool)
             .optional("capitalization", &capitalization, keyIn<QFont::Capitalization>(0, 4))
             .optional("letterSpacingType", &spacingType, keyIn<QFont::SpacingType>(0, 1))
             .optional("letterSpacing", &letterSpacing, readFinite)
             .optional("wordSpacing", &wordSpacing, readFinite)
             .optional("stretch", &stretch, intIn(0, 4000))
             .optional("styleHint", &hint, keyIn<QFont::StyleHint>(0, 255))
             .optional("styleStrategy", &strategy, keyIn<QFont::StyleStrategy>(0, 0xFFFF))
             .optional("hintingPreference", &hinting, keyIn<QFont::HintingPreference>(0, 3))
             .optional("resolveMask", &mask, qint64In(0, std::numeric_limits<uint>::max()))
             .ok())
        return false;
    QFont font(families);
    font.setStyleName(styleName);
    if (members.has("pixelSize"))
        font.setPixelSize(pixelSize);
    else if (members.has("pointSizeF"))
        font.setPointSizeF(pointSize);
    font.setWeight(QFont::Weight(weight));
    font.setStyle(QFont::Style(style));
    font.setUnderline(underline);
    font.setOverline(overline);
    font.setStrikeOut(strikeOut);
    if (fixedPitch) font.setFixedPitch(*fixedPitch);
    font.setKerning(kerning);
    font.setCapitalization(QFont::Capitalization(capitalization));
    font.setLetterSpacing(QFont::SpacingType(spacingType), letterSpacing);
    font.setWordSpacing(wordSpacing);
    font.setStretch(stretch);
    font.setStyleHint(QFont::StyleHint(hint), QFont::StyleStrategy(strategy));
    font.setHintingPreference(QFont::HintingPreference(hinting));
    if (mask >= 0) font.setResolveMask(uint(mask));
    *out = font;
    return true;
}

bool cursorToJson(const QCursor& cursor, QJsonValue* json, QString& why) {
    if (cursor.shape() > Qt::LastCursor)
        return fail(why, QStringLiteral("bitmap cursors cannot be stored"));
    *json = keyToJson(QMetaEnum::fromType<Qt::CursorShape>(), cursor.shape());
    return true;
}

bool readCursor(const QJsonValue& json, QCursor* out, QString& why) {
    int shape = 0;
    if (!readKey(QMetaEnum::fromType<Qt::CursorShape>(), json, Qt::ArrowCursor, Qt::LastCursor,
                 &shape, why))
        return false;
    *out = QCursor(Qt::CursorShape(shape));
    return true;
}

bool iconToJson(const QIcon& icon, QJsonValue* json, QString& why) {
    if (icon.isNull()) {
        *json = QJsonValue::Null;
        return true;
    }
    if (!icon.name().isEmpty()) {
        *json = QJsonObject{{QStringLiteral("theme"), icon.name()}};
        return true;
    }
    if (!guiAvailable())
        return fail(why, QStringLiteral("an icon's pictures need a GUI application"));
    // Every picture the icon holds, as PNG, by mode and state.
    QJsonArray pictures;
    for (int mode = 0; mode < 4; ++mode) {
        for (int state = 0; state < 2; ++state) {
            for (const QSize& size : icon.availableSizes(QIcon::Mode(mode), QIcon::State(state))) {
                const QPixmap pixmap =
                    icon.pixmap(size, 1.0, QIcon::Mode(mode), QIcon::State(state));
                QByteArray png;
                QBuffer buffer(&png);
                if (pixmap.size() != size || !buffer.open(QIODevice::WriteOnly) ||
                    !pixmap.save(&buffer, "PNG"))
                    return fail(why, QStringLiteral("the icon's %1x%2 picture cannot be stored")
                                         .arg(size.width())
                                         .arg(size.height()));
                pictures.append(
                    QJsonObject{{QStringLiteral("mode"), QLatin1String(kIconModes[mode])},
                                {QStringLiteral("state"), QLatin1String(kIconStates[state])},
                                {QStringLiteral("png"), QString::fromLatin1(png.toBase64())}});
            }
        }
    }
    *json = pictures;
    return true;
}

bool readIcon(const QJsonValue& json, QIcon* out, QString& why) {
    if (json.isNull()) {
        *out = QIcon();
        return true;
    }
    if (json.isObject()) {
        QString theme;
        const auto iconName = [](const QJsonValue& json, QString* out, QString& why) {
            *out = json.toString();
            return (!out->isEmpty() && out->size() <= 200) ||
                   fail(why, QStringLiteral("%1 is not an icon name").arg(shown(json)));
        };
        if (!Members(json, "an icon", {"theme"}, why).required("theme", &theme, iconName).ok())
            return false;
        *out = QIcon::fromTheme(theme);
        return true;
    }
    if (!json.isArray()) return fail(why, QStringLiteral("%1 is not an icon").arg(shown(json)));
    QIcon icon;
    qint64 pixels = 0;
    for (const QJsonValue& item : json.toArray()) {
        int mode = 0, state = 0;
        QByteArray png;
        const auto named = [](const auto& names) {
            return [&names](const QJsonValue& json, int* out, QString& why) {
                *out = indexOf(names, json);
                return *out >= 0 || fail(why, QStringLiteral("%1 is unknown").arg(shown(json)));
            };
        };
        if (!Members(item, "an icon's picture", {"mode", "state", "png"}, why)
                 .required("mode", &mode, named(kIconModes))
                 .required("state", &state, named(kIconStates))
                 .required("png", &png, readBase64)
                 .ok())
            return false;
        QBuffer buffer(&png);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer, "png");
        reader.setAutoDetectImageFormat(false);
        const QSize size = reader.size();
        pixels += qint64(size.width()) * size.height();
        if (!size.isValid() || size.width() > kIconSide || size.height() > kIconSide ||
            pixels > kIconPixels)
            return fail(why, QStringLiteral("an icon's picture is not a PNG image within %1x%1 "
                                            "pixels, %2 pixels in all")
                                 .arg(kIconSide)
                                 .arg(kIconPixels));
        const QImage image = reader.read();
        if (image.isNull() || image.size() != size)
            return fail(
                why,
                QStringLiteral("an icon's picture cannot be read: %1").arg(reader.errorString()));
        icon.addPixmap(QPixmap::fromImage(image), QIcon::Mode(mode), QIcon::State(state));
    }
    *out = icon;
    return true;
}

QJsonValue keySequenceToJson(const QKeySequence& keys) {
    const QString text = keys.toString(QKeySequence::PortableText);
    if (QKeySequence::fromString(text, QKeySequence::PortableText) == keys) return text;
    QJsonArray combinations;  // keys that have no portable name
    for (int i = 0; i < keys.count(); ++i)
        combinations.append(keys[i].toCombined());
    return combinations;
}

bool readKeySequence(const QJsonValue& json, QKeySequence* out, QString& why) {
    if (json.isString()) {
        const QString text = json.toString();
        const QKeySequence keys = QKeySequence::fromString(text, QKeySequence::PortableText);
        if (!text.isEmpty() && keys.isEmpty())
            return fail(why, QStringLiteral("%1 is not a key sequence").arg(shown(json)));
        *out = keys;
        return true;
    }
    const QJsonArray array = json.toArray();
    if (!json.isArray() || array.size() > 4)
        return fail(why, QStringLiteral("%1 is not a key sequence").arg(shown(json)));
    std::array<int, 4> combinations{};
    for (qsizetype i = 0; i < array.size(); ++i)
        if (!readInt(array.at(i), std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                     &combinations[i], why))
            return false;
    *out = QKeySequence(combinations[0], combinations[1], combinations[2], combinations[3]);
    return true;
}

}  // namespace quendrix::variantjson
