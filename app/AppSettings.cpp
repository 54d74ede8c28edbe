#include "app/AppSettings.h"

const QString AppSettings::DefaultServerAddress = QStringLiteral("cfg.tavrel.ru");

AppSettings::AppSettings()
    : m_store(new QSettings(QSettings::NativeFormat, QSettings::UserScope, QString::fromLatin1(Organisation),
                            QString::fromLatin1(Application)))
    , m_owned(true) {}

AppSettings::AppSettings(QSettings *store)
    : m_store(store)
    , m_owned(false) {}

AppSettings::~AppSettings() {
    if (m_owned)
        delete m_store;
}

void AppSettings::sync() {
    m_store->sync();
}

namespace {

QString key(const char *k) {
    return QString::fromLatin1(k);
}

} // namespace

QString AppSettings::portName() const {
    return m_store->value(key(Keys::PortName)).toString();
}

void AppSettings::setPortName(const QString &name) {
    m_store->setValue(key(Keys::PortName), name);
}

int AppSettings::skinName() const {
    return m_store->value(key(Keys::SkinName), 0).toInt();
}

void AppSettings::setSkinName(int row) {
    m_store->setValue(key(Keys::SkinName), row);
}

int AppSettings::telemetryTime() const {
    return m_store->value(key(Keys::TelemetryTime), 0).toInt();
}

void AppSettings::setTelemetryTime(int row) {
    m_store->setValue(key(Keys::TelemetryTime), row);
}

int AppSettings::loginType() const {
    return m_store->value(key(Keys::LoginType), 0).toInt();
}

void AppSettings::setLoginType(int type) {
    m_store->setValue(key(Keys::LoginType), type);
}

int AppSettings::passWord() const {
    return m_store->value(key(Keys::PassWord), 0).toInt();
}

void AppSettings::setPassWord(int password) {
    m_store->setValue(key(Keys::PassWord), password);
}

QString AppSettings::serverAddress() const {
    return m_store->value(key(Keys::ServerAddress)).toString();
}

void AppSettings::setServerAddress(const QString &host) {
    m_store->setValue(key(Keys::ServerAddress), host);
}

int AppSettings::serverPort() const {
    return m_store->value(key(Keys::ServerPort), 0).toInt();
}

void AppSettings::setServerPort(int port) {
    m_store->setValue(key(Keys::ServerPort), port);
}

QString AppSettings::serialNumber() const {
    return m_store->value(key(Keys::SerialNumber)).toString();
}

void AppSettings::setSerialNumber(const QString &imei) {
    m_store->setValue(key(Keys::SerialNumber), imei);
}

int AppSettings::timeoutSeconds() const {
    return m_store->value(key(Keys::Timeout), 0).toInt();
}

void AppSettings::setTimeoutSeconds(int seconds) {
    m_store->setValue(key(Keys::Timeout), seconds);
}

bool AppSettings::settingsLogSave() const {
    return m_store->value(key(Keys::SettingsLogSave), false).toBool();
}

void AppSettings::setSettingsLogSave(bool on) {
    m_store->setValue(key(Keys::SettingsLogSave), on);
}

bool AppSettings::verifyWrites() const {
    return m_store->value(key(Keys::VerifyWrites), true).toBool();
}

void AppSettings::setVerifyWrites(bool on) {
    m_store->setValue(key(Keys::VerifyWrites), on);
}

bool AppSettings::serverLogSave() const {
    return m_store->value(key(Keys::ServerLogSave), false).toBool();
}

void AppSettings::setServerLogSave(bool on) {
    m_store->setValue(key(Keys::ServerLogSave), on);
}

QString AppSettings::login() const {
    return m_store->value(key(Keys::Login)).toString();
}

void AppSettings::setLogin(const QString &name) {
    m_store->setValue(key(Keys::Login), name);
}

QString AppSettings::userPassword() const {
    return m_store->value(key(Keys::UserPassword)).toString();
}

void AppSettings::setUserPassword(const QString &password) {
    m_store->setValue(key(Keys::UserPassword), password);
}

int AppSettings::currentProxy() const {
    return m_store->value(key(Keys::CurrentProxy), 0).toInt();
}

void AppSettings::setCurrentProxy(int row) {
    m_store->setValue(key(Keys::CurrentProxy), row);
}

QString AppSettings::proxyServerAddres() const {
    return m_store->value(key(Keys::ProxyServerAddres)).toString();
}

void AppSettings::setProxyServerAddres(const QString &host) {
    m_store->setValue(key(Keys::ProxyServerAddres), host);
}

int AppSettings::proxyPort() const {
    return m_store->value(key(Keys::ProxyPort), 0).toInt();
}

void AppSettings::setProxyPort(int port) {
    m_store->setValue(key(Keys::ProxyPort), port);
}

QString AppSettings::proxyLogin() const {
    return m_store->value(key(Keys::ProxyLogin)).toString();
}

void AppSettings::setProxyLogin(const QString &name) {
    m_store->setValue(key(Keys::ProxyLogin), name);
}

QString AppSettings::proxyPassword() const {
    return m_store->value(key(Keys::ProxyPassword)).toString();
}

void AppSettings::setProxyPassword(const QString &password) {
    m_store->setValue(key(Keys::ProxyPassword), password);
}

QString AppSettings::serverAddressOrDefault() const {
    const QString host = serverAddress();
    return host.isEmpty() ? DefaultServerAddress : host;
}

int AppSettings::serverPortOrDefault() const {
    const int port = serverPort();
    return port == 0 ? DefaultServerPort : port;
}

int AppSettings::timeoutSecondsOrDefault() const {
    const int seconds = timeoutSeconds();
    return seconds == 0 ? DefaultTimeoutSeconds : seconds;
}

bool AppSettings::deviceLogToFile() const {
    return settingsLogSave() || serverLogSave();
}

AppSettings::Record AppSettings::record() const {
    Record r;
    r.portName = portName();
    r.skinName = skinName();
    r.telemetryTime = telemetryTime();
    // The settings dialog takes the connection type as a truth value: any non-zero is remote.
    r.loginType = m_store->value(key(Keys::LoginType), false).toBool() ? RemoteConnection : LocalConnection;
    r.passWord = passWord();
    r.serverAddress = serverAddress();
    r.serverPort = serverPort();
    r.serialNumber = serialNumber();
    r.timeoutSeconds = timeoutSeconds();
    r.logSave = settingsLogSave();
    r.login = login();
    r.userPassword = userPassword();
    r.currentProxy = currentProxy();
    r.proxyServerAddres = proxyServerAddres();
    r.proxyPort = proxyPort();
    r.proxyLogin = proxyLogin();
    r.proxyPassword = proxyPassword();
    r.verifyWrites = verifyWrites();
    return r;
}

void AppSettings::writeRecord(const Record &r) {
    setPortName(r.portName);
    setSkinName(r.skinName);
    setTelemetryTime(r.telemetryTime);
    setLoginType(r.loginType);
    setServerAddress(r.serverAddress);
    setServerPort(r.serverPort);
    setSerialNumber(r.serialNumber);
    setTimeoutSeconds(r.timeoutSeconds);
    setSettingsLogSave(r.logSave);
    setLogin(r.login);
    setUserPassword(r.userPassword);
    setCurrentProxy(r.currentProxy);
    setProxyServerAddres(r.proxyServerAddres);
    setVerifyWrites(r.verifyWrites);
    setProxyPort(r.proxyPort);
    setProxyLogin(r.proxyLogin);
    setProxyPassword(r.proxyPassword);
}

quint32 AppSettings::telemetryPeriod(int connectionType, int telemetryRow) {
    if (connectionType != RemoteConnection)
        return 1000;
    static constexpr quint32 periodByRow[] = {0, 1000, 2000, 3000, 4000, 5000, 50};
    if (telemetryRow < 0 || telemetryRow >= int(sizeof periodByRow / sizeof periodByRow[0]))
        return 0;
    return periodByRow[telemetryRow];
}

SessionController::Settings AppSettings::sessionSettings(bool remote, const QString &portOverride) const {
    SessionController::Settings s;
    s.remote = remote;
    s.portName = portOverride.isEmpty() ? portName() : portOverride;
    s.host = serverAddress();
    s.port = quint16(serverPort());
    s.imei = serialNumber();
    s.hasPassword = passWord() != 0;
    s.password = quint32(passWord());
    return s;
}
