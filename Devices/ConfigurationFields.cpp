#include "Devices/ConfigurationFields.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kd {

namespace {

using Kind = ConfigField::Kind;

// Where the configuration file's reader looks for a field: the root key, for arrays the element's
// object, inside it (for "gsm") a member object named with the 1-based number, then the member.
struct FileLocation {
    const char *root;
    bool array = false;
    const char *inner = nullptr; // "gprs %1", "roaming%1" (the reader's spelling, without the blank)
    const char *member = nullptr;
    bool read = true; // false: written to the file but never read back
};

struct Row {
    const char *section;
    const char *group; // %1 = the 1-based element number
    int elements;      // 0: every element of the section
    const char *path;  // %1 = the 0-based element index
    FileLocation file;
    const char *label;
    const char *unit;
    Kind kind;
    int width;
    std::function<QVariant(const ConfigurationValue *)> get;
    std::function<void(ConfigurationValue *, const QVariant &)> set;
    bool writable = true;
};

template <class E, class T>
std::function<QVariant(const ConfigurationValue *)> getter(T (E::*get)() const) {
    return [get](const ConfigurationValue *v) -> QVariant {
        const E *e = static_cast<const E *>(v);
        if constexpr (std::is_same_v<T, QString>)
            return (e->*get)();
        else
            return QVariant(qulonglong((e->*get)()));
    };
}

template <class E, class T>
std::function<void(ConfigurationValue *, const QVariant &)> setter(void (E::*set)(T)) {
    return [set](ConfigurationValue *v, const QVariant &x) {
        E *e = static_cast<E *>(v);
        if constexpr (std::is_same_v<std::decay_t<T>, QString>)
            (e->*set)(x.toString());
        else
            (e->*set)(std::decay_t<T>(x.toULongLong()));
    };
}

// The roaming timetable is one 128-bit field: 32 hex digits, high word first.
QVariant timetableOf(const ConfigurationValue *v) {
    const auto *e = static_cast<const GSMConfigurationItem *>(v);
    return QString::asprintf("%016llx%016llx", qulonglong(e->timetableHi()), qulonglong(e->timetableLow()));
}

void setTimetable(ConfigurationValue *v, const QVariant &x) {
    auto *e = static_cast<GSMConfigurationItem *>(v);
    const QString hex = x.toString().rightJustified(32, QLatin1Char('0'));
    e->setTimetableHi(hex.left(16).toULongLong(nullptr, 16));
    e->setTimetableLow(hex.mid(16).toULongLong(nullptr, 16));
}

using DI = DeviceInfoConfigurationItem;
using SY = SystemConfigurationItem;
using NA = NavigationConfigurationItem;
using GS = GSMConfigurationItem;
using SE = ServerConfigurationItem;
using AG = AgcConfigurationItem;
using LO = LogicConfigurationItem;
using FU = FuelConfigurationItem;

// Only the first five fuel elements carry tank averaging on the wire.
constexpr int FuelTanks = 5;

QVector<Row> rows() {
    const FileLocation sys{"SystemParameters"};
    const FileLocation nav{"navigation"};
    return {
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "name",
         {"name"},
         "Название",
         "",
         Kind::Text,
         255,
         getter(&DI::name),
         setter(&DI::setName),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "softver",
         {"softver"},
         "Версия ПО",
         "",
         Kind::Number,
         32,
         getter(&DI::Version),
         setter(&DI::setVersion),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "hardver.devgroup",
         {"hardver.devgroup"},
         "Группа",
         "",
         Kind::Number,
         32,
         getter(&DI::DeviceGroup),
         setter(&DI::setDeviceGroup),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "hardver.devtype",
         {"hardver.devtype"},
         "Тип",
         "",
         Kind::Number,
         32,
         getter(&DI::DeviceType),
         setter(&DI::setDeviceType),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "hardver.devmod",
         {"hardver.devmod"},
         "Модификация",
         "",
         Kind::Number,
         32,
         getter(&DI::DeviceMod),
         setter(&DI::setDeviceMod),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "hardver.serial",
         {"hardver.serial"},
         "Серийный номер",
         "",
         Kind::Number,
         32,
         getter(&DI::SerialNumber),
         setter(&DI::setSerialNumber),
         false},
        {keys::MainDeviceInfo,
         "Прибор",
         1,
         "IMEI",
         {"IMEI", false, nullptr, nullptr, false},
         "IMEI",
         "",
         Kind::Text,
         255,
         getter(&DI::IMEI),
         setter(&DI::setIMEI),
         false},

        {keys::System,
         "Система",
         1,
         "SystemParameters.parkingMin",
         {sys.root, false, nullptr, "parkingMin"},
         "Время до перехода в режим стоянки",
         "мин",
         Kind::Number,
         8,
         getter(&SY::parkingMin),
         setter(&SY::setParkingMin)},
        {keys::System,
         "Система",
         1,
         "SystemParameters.pwrMode",
         {sys.root, false, nullptr, "pwrMode"},
         "Режим питания",
         "",
         Kind::Number,
         8,
         getter(&SY::pwrMode),
         setter(&SY::setPwrMode)},
        {keys::System,
         "Система",
         1,
         "SystemParameters.gsens",
         {sys.root, false, nullptr, "gsens"},
         "Чувствительность акселерометра",
         "",
         Kind::Number,
         4,
         getter(&SY::gsens),
         setter(&SY::setGsens)},
        {keys::System,
         "Система",
         1,
         "SystemParameters.lowSpeed",
         {sys.root, false, nullptr, "lowSpeed"},
         "Режим низкой скорости",
         "",
         Kind::Flag,
         1,
         getter(&SY::lowSpeed),
         setter(&SY::setLowSpeed)},
        {keys::System,
         "Система",
         1,
         "SystemParameters.OutCtrl",
         {sys.root, false, nullptr, "OutCtrl"},
         "Управление выходом",
         "",
         Kind::Flag,
         1,
         getter(&SY::OutCtrl),
         setter(&SY::setOutCtrl)},

        {keys::Navigation,
         "Навигация",
         1,
         "navigation.deltaCourse",
         {nav.root, false, nullptr, "deltaCourse"},
         "Изменение курса",
         "°",
         Kind::Number,
         8,
         getter(&NA::deltaCourse),
         setter(&NA::setDeltaCourse)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.deltaSpeed",
         {nav.root, false, nullptr, "deltaSpeed"},
         "Изменение скорости",
         "км/ч",
         Kind::Number,
         8,
         getter(&NA::deltaSpeed),
         setter(&NA::setDeltaSpeed)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.driveTimeout",
         {nav.root, false, nullptr, "driveTimeout"},
         "Период записи в движении",
         "с",
         Kind::Number,
         8,
         getter(&NA::driveTimeout),
         setter(&NA::setDriveTimeout)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.deltaDistance",
         {nav.root, false, nullptr, "deltaDistance"},
         "Пройденное расстояние",
         "м",
         Kind::Number,
         8,
         getter(&NA::deltaDistance),
         setter(&NA::setDeltaDistance)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.freezeNav",
         {nav.root, false, nullptr, "freezeNav"},
         "Замораживать координаты на стоянке",
         "",
         Kind::Flag,
         1,
         getter(&NA::freezeNav),
         setter(&NA::setFreezeNav)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.pwrNav",
         {nav.root, false, nullptr, "pwrNav"},
         "Режим питания навигации",
         "",
         Kind::Number,
         4,
         getter(&NA::pwrNav),
         setter(&NA::setPwrNav)},
        {keys::Navigation,
         "Навигация",
         1,
         "navigation.faultSpeed",
         {nav.root, false, nullptr, "faultSpeed", false},
         "Порог ложной скорости",
         "км/ч",
         Kind::Number,
         8,
         getter(&NA::faultSpeed),
         setter(&NA::setFaultSpeed)},

        {keys::Gsm,
         "SIM %1",
         0,
         "gsm[%1].gprs.apn",
         {"gsm", true, "gprs %1", "apn"},
         "точка доступа",
         "",
         Kind::Text,
         GS::TextSize,
         getter(&GS::apn),
         setter(&GS::setApn)},
        {keys::Gsm,
         "SIM %1",
         0,
         "gsm[%1].gprs.apn_name",
         {"gsm", true, "gprs %1", "apn_name"},
         "пользователь",
         "",
         Kind::Text,
         GS::TextSize,
         getter(&GS::apnUser),
         setter(&GS::setApnUser)},
        {keys::Gsm,
         "SIM %1",
         0,
         "gsm[%1].gprs.apn_password",
         {"gsm", true, "gprs %1", "apn_password"},
         "пароль",
         "",
         Kind::Text,
         GS::TextSize,
         getter(&GS::apnPassword),
         setter(&GS::setApnPassword)},
        {keys::Gsm,
         "SIM %1",
         0,
         "gsm[%1].roaming.forbidden",
         {"gsm", true, "roaming%1", "forbidden"},
         "роуминг",
         "",
         Kind::Flag,
         1,
         getter(&GS::forbidden),
         setter(&GS::setForbidden)},
        {keys::Gsm,
         "SIM %1",
         0,
         "gsm[%1].roaming.timetable",
         {"gsm", true, "roaming%1", "timetableHi"},
         "расписание роуминга",
         "",
         Kind::Timetable,
         128,
         timetableOf,
         setTimetable},

        {keys::Server,
         "Сервер %1",
         0,
         "Server[%1].enable",
         {"Server", true, nullptr, "enable"},
         "Передавать данные на сервер",
         "",
         Kind::Flag,
         1,
         getter(&SE::enable),
         setter(&SE::setEnable)},
        {keys::Server,
         "Сервер %1",
         0,
         "Server[%1].server",
         {"Server", true, nullptr, "server"},
         "Адрес сервера",
         "",
         Kind::Text,
         SE::AddressSize,
         getter(&SE::server),
         setter(&SE::setServer)},
        {keys::Server,
         "Сервер %1",
         0,
         "Server[%1].port",
         {"Server", true, nullptr, "port"},
         "Порт",
         "",
         Kind::Number,
         32,
         getter(&SE::port),
         setter(&SE::setPort)},
        {keys::Server,
         "Сервер %1",
         0,
         "Server[%1].proto",
         {"Server", true, nullptr, "proto"},
         "Протокол",
         "",
         Kind::Number,
         8,
         getter(&SE::proto),
         setter(&SE::setProto)},

        {keys::Agc,
         "Аналоговый вход %1",
         0,
         "adcs[%1].enabled",
         {"adcs", true, nullptr, "enabled"},
         "Вход используется",
         "",
         Kind::Flag,
         1,
         getter(&AG::enabled),
         setter(&AG::setEnabled)},
        {keys::Agc,
         "Аналоговый вход %1",
         0,
         "adcs[%1].low_level_threshold",
         {"adcs", true, nullptr, "low_level_threshold"},
         "Нижний порог",
         "",
         Kind::Number,
         16,
         getter(&AG::thresholdLow),
         setter(&AG::setThresholdLow)},
        {keys::Agc,
         "Аналоговый вход %1",
         0,
         "adcs[%1].high_level_threshold",
         {"adcs", true, nullptr, "high_level_threshold"},
         "Верхний порог",
         "",
         Kind::Number,
         16,
         getter(&AG::thresholdHigh),
         setter(&AG::setThresholdHigh)},
        {keys::Agc,
         "Аналоговый вход %1",
         0,
         "adcs[%1].sensitivity",
         {"adcs", true, nullptr, "sensitivity"},
         "Чувствительность",
         "",
         Kind::Number,
         16,
         getter(&AG::sensitivity),
         setter(&AG::setSensitivity)},
        {keys::Agc,
         "Аналоговый вход %1",
         0,
         "adcs[%1].averaging",
         {"adcs", true, nullptr, "averaging"},
         "Усреднение",
         "",
         Kind::Number,
         16,
         getter(&AG::averaging),
         setter(&AG::setAveraging)},

        {keys::Logic,
         "Логический вход %1",
         0,
         "dinputs[%1].func",
         {"dinputs", true, nullptr, "func"},
         "Функция входа",
         "",
         Kind::Number,
         8,
         getter(&LO::func),
         setter(&LO::setFunc)},

        {keys::Fuel,
         "Датчик топлива %1",
         0,
         "fuel_sensors[%1].addr",
         {"fuel_sensors", true, nullptr, "addr"},
         "Сетевой адрес",
         "",
         Kind::Number,
         8,
         getter(&FU::addr),
         setter(&FU::setAddr)},
        {keys::Fuel,
         "Датчик топлива %1",
         0,
         "fuel_sensors[%1].tank_num",
         {"fuel_sensors", true, nullptr, "tank_num"},
         "Номер бака",
         "",
         Kind::Number,
         8,
         getter(&FU::tank_num),
         setter(&FU::setTank_num)},
        {keys::Fuel,
         "Бак %1",
         FuelTanks,
         "fuel_tanks[%1].averaging",
         {"fuel_tanks", true, nullptr, "averaging"},
         "Усреднение",
         "",
         Kind::Number,
         16,
         getter(&FU::averaging),
         setter(&FU::setAveraging)},
    };
}

std::function<QJsonValue(const QJsonObject &)> fileLookup(const FileLocation &f, int element) {
    return [f, element](const QJsonObject &root) -> QJsonValue {
        if (!f.read)
            return QJsonValue(QJsonValue::Undefined);
        QJsonValue v = root.value(QLatin1String(f.root));
        if (f.array) {
            const QJsonArray a = v.toArray();
            if (element >= a.size())
                return QJsonValue(QJsonValue::Undefined);
            v = a.at(element);
        }
        if (!f.member)
            return v;
        QJsonObject o = v.toObject();
        if (f.inner)
            o = o.value(QString::fromUtf8(f.inner).arg(element + 1)).toObject();
        const QJsonValue m = o.value(QLatin1String(f.member));
        // The timetable is two words; either one makes the field carried.
        if (m.isUndefined() && QLatin1String(f.member) == QLatin1String("timetableHi"))
            return o.value(QLatin1String("timetableLow"));
        return m;
    };
}

QString withNumber(const char *pattern, int n) {
    const QString p = QString::fromUtf8(pattern);
    return p.contains(QLatin1String("%1")) ? p.arg(n) : p;
}

// Rows with the same group pattern form a block; the block lists its fields element by element
// ("SIM 1" whole, then "SIM 2").
QVector<ConfigField> buildFields() {
    VantorConfiguration shape;
    QVector<ConfigField> fields;
    const QVector<Row> all = rows();
    for (int first = 0; first < all.size();) {
        int end = first;
        while (end < all.size() && qstrcmp(all.at(end).group, all.at(first).group) == 0)
            ++end;
        const IConfigurationItem *section = shape.item(QString::fromLatin1(all.at(first).section));
        const int count = all.at(first).elements ? all.at(first).elements : (section ? section->count() : 0);
        for (int i = 0; i < count; ++i) {
            for (int k = first; k < end; ++k) {
                const Row &r = all.at(k);
                ConfigField f;
                f.path = withNumber(r.path, i);
                f.section = QString::fromLatin1(r.section);
                f.element = i;
                f.group = withNumber(r.group, i + 1);
                f.label = QString::fromUtf8(r.label);
                f.unit = QString::fromUtf8(r.unit);
                f.kind = r.kind;
                f.width = r.width;
                f.writable = r.writable;
                if (r.kind == Kind::Flag) {
                    f.words = f.path.endsWith(QLatin1String("forbidden"))
                                  ? QStringList{QStringLiteral("разрешен"), QStringLiteral("запрещен")}
                                  : QStringList{QStringLiteral("выкл"), QStringLiteral("вкл")};
                }
                f.get = r.get;
                f.set = r.set;
                f.inFile = fileLookup(r.file, i);
                fields.append(f);
            }
        }
        first = end;
    }
    return fields;
}

int popcount64(quint64 v) {
    int n = 0;
    for (; v; v &= v - 1)
        ++n;
    return n;
}

} // namespace

QVariant ConfigField::rawValue(const VantorConfiguration &cfg) const {
    const IConfigurationItem *s = cfg.item(section);
    const ConfigurationValue *e = s ? s->elementObject(element) : nullptr;
    return e ? get(e) : QVariant();
}

QVariant ConfigField::value(const VantorConfiguration &cfg) const {
    return wireValue(rawValue(cfg));
}

QVariant ConfigField::wireValue(const QVariant &raw) const {
    if (!raw.isValid())
        return raw;
    switch (kind) {
    case Kind::Number:
    case Kind::Flag:
        return width >= 64 ? raw : QVariant(qulonglong(raw.toULongLong() & ((quint64(1) << width) - 1)));
    case Kind::Text: {
        // One byte per character: a code above 0xFF goes out as 0 and ends the text the device keeps.
        const QString t = raw.toString().left(width);
        int end = 0;
        while (end < t.size() && t.at(end).unicode() != 0 && t.at(end).unicode() <= 0xFF)
            ++end;
        return t.left(end);
    }
    case Kind::Timetable:
        return raw;
    }
    return raw;
}

void ConfigField::assign(VantorConfiguration &cfg, const QVariant &v) const {
    const IConfigurationItem *s = cfg.item(section);
    if (ConfigurationValue *e = s ? s->elementObject(element) : nullptr)
        set(e, v);
}

QString ConfigField::title() const {
    return group + QStringLiteral(": ") + label;
}

QString ConfigField::text(const QVariant &v) const {
    if (!v.isValid())
        return QStringLiteral("—");
    switch (kind) {
    case Kind::Flag:
        return words.value(int(v.toULongLong() & 1));
    case Kind::Text:
        return v.toString().isEmpty() ? QStringLiteral("(пусто)") : QStringLiteral("«%1»").arg(v.toString());
    case Kind::Timetable: {
        const QString hex = v.toString().rightJustified(32, QLatin1Char('0'));
        const int on = popcount64(hex.left(16).toULongLong(nullptr, 16)) +
                       popcount64(hex.mid(16).toULongLong(nullptr, 16));
        return QStringLiteral("%1 из 112 интервалов").arg(on);
    }
    case Kind::Number:
        break;
    }
    return unit.isEmpty() ? v.toString() : v.toString() + QLatin1Char(' ') + unit;
}

QString ConfigField::plain(const QVariant &v) const {
    if (!v.isValid())
        return QStringLiteral("-");
    if (kind == Kind::Text)
        return QLatin1Char('"') + v.toString() + QLatin1Char('"');
    if (kind == Kind::Timetable)
        return QStringLiteral("0x") + v.toString();
    return v.toString();
}

const QVector<ConfigField> &configurationFields() {
    static const QVector<ConfigField> fields = buildFields();
    return fields;
}

const ConfigField *findField(const QString &path) {
    for (const ConfigField &f : configurationFields()) {
        if (f.path == path)
            return &f;
    }
    return nullptr;
}

QVector<const ConfigField *> writableFields(const QStringList &sections) {
    QVector<const ConfigField *> out;
    for (const ConfigField &f : configurationFields()) {
        if (f.writable && (sections.isEmpty() || sections.contains(f.section)))
            out.append(&f);
    }
    return out;
}

} // namespace kd
