#include "protocol/LinkError.h"

#include "protocol/Connection.h"

#include <QAbstractSocket>
#include <QSerialPort>

LinkFailure linkFailure(int errorGroup, int errorCode, bool everConnected) {
    LinkFailure f;
    f.code = errorCode;
    f.remote = errorGroup == Connection::NetworkError;
    if (errorGroup == Connection::SerialError) {
        switch (errorCode) {
        case QSerialPort::NoError:
        case QSerialPort::UnsupportedOperationError:
        case QSerialPort::TimeoutError:
            break;
        case QSerialPort::DeviceNotFoundError:
            f.error = LinkError::DeviceNotFound;
            break;
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
            f.error = LinkError::DeviceGone;
            break;
        case QSerialPort::NotOpenError:
            f.error = LinkError::PortClosed;
            break;
        case QSerialPort::PermissionError:
            f.error = LinkError::PortAccessDenied;
            break;
        default:
            f.error = LinkError::PortError;
            break;
        }
        return f;
    }
    switch (errorCode) {
    case QAbstractSocket::RemoteHostClosedError:
        f.error = everConnected ? LinkError::ServerClosed : LinkError::ServerUnreachable;
        break;
    case QAbstractSocket::ConnectionRefusedError:
        f.error = LinkError::ServerRefused;
        break;
    case QAbstractSocket::HostNotFoundError:
        f.error = LinkError::ServerNotFound;
        break;
    case QAbstractSocket::SocketTimeoutError:
        f.error = LinkError::ServerNoAnswer;
        break;
    case QAbstractSocket::NetworkError:
        f.error = everConnected ? LinkError::NetworkError : LinkError::ServerUnreachable;
        break;
    default:
        f.error = LinkError::NetworkError;
        break;
    }
    return f;
}

QString linkErrorText(const LinkFailure &f) {
    QString text;
    switch (f.error) {
    case LinkError::None:
        return {};
    case LinkError::NoDevice:
        return QStringLiteral("Нет подключенных приборов");
    case LinkError::SeveralDevices:
        return QStringLiteral("Подключено более одного прибора, отключите лишние \n для избежания ошибок");
    case LinkError::PortOpenFailed:
        text = QStringLiteral("не удалось открыть порт %1").arg(f.where);
        break;
    case LinkError::DeviceNotFound:
        return QStringLiteral("Прибор отключен");
    case LinkError::DeviceGone:
        return QStringLiteral("Прибор был отключен");
    case LinkError::PortClosed:
        return QStringLiteral("Порт закрыт");
    case LinkError::PortAccessDenied:
        text = QStringLiteral("Нет доступа к порту");
        break;
    case LinkError::PortError:
        text = QStringLiteral("Ошибка порта %1").arg(f.code);
        break;
    case LinkError::ServerRefused:
        return QStringLiteral("Сервер отказал в подключении");
    case LinkError::ServerNotFound:
        return QStringLiteral("Сервер не найден");
    case LinkError::ServerNoAnswer:
        return QStringLiteral("Сервер не отвечает");
    case LinkError::ServerUnreachable:
        text = QStringLiteral("Сервер недоступен");
        break;
    case LinkError::ServerClosed:
        return QStringLiteral("Отключен от сервера");
    case LinkError::NetworkError:
        text = QStringLiteral("Ошибка подключения к серверу (%1)").arg(f.code);
        break;
    case LinkError::ConnectTimeout:
        return f.remote ? QStringLiteral("не удалось подключиться к серверу %1").arg(f.where)
                        : QStringLiteral("порт не открылся");
    case LinkError::LinkClosed:
        return f.remote ? QStringLiteral("Отключен от сервера") : QStringLiteral("Прибор был отключен");
    case LinkError::NotResponding:
        return QStringLiteral("прибор не отвечает, соединение разорвано");
    }
    return f.reason.isEmpty() ? text : QStringLiteral("%1: %2").arg(text, f.reason);
}
