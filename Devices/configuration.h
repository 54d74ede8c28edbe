#pragma once

#include "Devices/SectionKeys.h"

#include <QJsonObject>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVector>

namespace kd {

// Base of every element ("value object") of a section: one SIM card, one analog channel, ...
// `changed()` follows every field signal so that a section can watch its elements generically.
class ConfigurationValue : public QObject {
    Q_OBJECT
public:
    explicit ConfigurationValue(QObject *parent = nullptr);

signals:
    void changed();

protected:
    // Stores `value` into `field`; true when it differed (the caller then emits its signals).
    template <class F, class V>
    bool assign(F &field, V value) {
        if (field == F(value))
            return false;
        field = F(value);
        return true;
    }

    // A field's setter: stores the value and, when it differed, emits the field's own signal (with the
    // new value, or none) and then changed(). Every setter of the model is one call of this.
    template <class Owner, class F, class V, class... Arg>
    void setField(F &field, const V &value, void (Owner::*notify)(Arg...)) {
        if (!assign(field, value))
            return;
        if constexpr (sizeof...(Arg) == 0)
            emit(static_cast<Owner *>(this)->*notify)();
        else
            emit(static_cast<Owner *>(this)->*notify)(field);
        emit changed();
    }
};

// Abstract base of every section. A QObject, so that typed_item can check a down-cast through the
// meta-object system.
class IConfigurationItem : public QObject {
    Q_OBJECT
public:
    explicit IConfigurationItem(QObject *parent = nullptr);
    ~IConfigurationItem() override;

    virtual int count() const = 0;
    virtual ConfigurationValue *elementObject(int index) const = 0;
    // The guarded value object (the first element); null once it has been destroyed.
    virtual ConfigurationValue *valueObject() const = 0;

signals:
    // Any element of the section changed, or a telemetry block was stored.
    void changed();
    // The section has been read from the device (one answer decoded).
    void DeviceInfoFilled();
};

// A section over its value type T: creates `count` elements at construction (index 0 first), parents
// them to itself and follows their change signals. Elements are held by guarded pointers, so a
// destroyed element reads as null and callers skip it.
template <class T>
class ConfigurationItem : public IConfigurationItem {
public:
    explicit ConfigurationItem(int count, QObject *parent = nullptr)
        : IConfigurationItem(parent) {
        for (int i = 0; i < count; ++i) {
            T *e = new T(this);
            m_elements.append(e);
            QObject::connect(e, &ConfigurationValue::changed, this, &IConfigurationItem::changed);
        }
    }

    int count() const override { return m_elements.size(); }
    T *element(int index) const {
        return (index >= 0 && index < m_elements.size()) ? m_elements.at(index).data() : nullptr;
    }
    T *value() const { return element(0); }
    ConfigurationValue *elementObject(int index) const override { return element(index); }
    ConfigurationValue *valueObject() const override { return value(); }

    // Index of an element in creation order, -1 if it is not one of ours (used to map a signal's
    // sender back to its channel).
    int indexOf(const QObject *element) const {
        for (int i = 0; i < m_elements.size(); ++i) {
            if (m_elements.at(i) == element)
                return i;
        }
        return -1;
    }

private:
    QVector<QPointer<T>> m_elements;
};

// The container: sections by key, ordered by plain string comparison.
class Configuration : public QObject {
    Q_OBJECT
public:
    explicit Configuration(QObject *parent = nullptr);
    ~Configuration() override;

    // Registers a section under a key (the container does not take ownership; sections are children).
    void registerItem(const QString &key, IConfigurationItem *item);
    IConfigurationItem *item(const QString &key) const;
    QStringList keys() const;

    // Configuration file form; the container itself has nothing to write or read.
    virtual void write(QJsonObject &root) const;
    virtual void read(const QJsonObject &root);
    // Emits configComplete when the whole device has been read; the container never is.
    virtual void checkComplete();

signals:
    void configComplete();

private:
    QMap<QString, QPointer<IConfigurationItem>> m_items;
};

namespace detail {
[[noreturn]] void typedItemFailure(const QString &key, const char *found, const char *expected);
}

// Section `key` as class S. A section registered under a key with another class is a programming
// fault: the program stops naming "typed_item", in release builds too. An absent key, or a section
// whose value object is gone, gives null; callers skip the work.
template <class S>
S *typed_item(const Configuration *cfg, const QString &key) {
    if (!cfg)
        return nullptr;
    IConfigurationItem *item = cfg->item(key);
    if (!item)
        return nullptr;
    S *section = qobject_cast<S *>(item);
    if (!section)
        detail::typedItemFailure(key, item->metaObject()->className(), S::staticMetaObject.className());
    if (!section->valueObject())
        return nullptr;
    return section;
}

// One line of the exchange log, through the "default" logging category: "<unix seconds> <text>".
void trafficLog(const QString &text);
// The last lines of this run's exchange log (a bounded copy kept for support reports), oldest first.
QStringList recentTrafficLog();

} // namespace kd
