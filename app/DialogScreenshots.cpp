#include "app/DialogScreenshots.h"

#include "app/CompareDialog.h"
#include "app/HistoryDialog.h"
#include "app/WritePreviewDialog.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"

#include <QTemporaryDir>
#include <QTimer>
#include <memory>

namespace {

struct Scene {
    VantorConfiguration device;
    VantorConfiguration loaded;
    QJsonObject root;
    QTemporaryDir folder; // the pictures' history, not the user's
    std::unique_ptr<kd::SnapshotStore> store;
};

void step(const std::shared_ptr<Scene> &scene, QWidget *dialog, const QString &name,
          const std::function<void(QWidget *, const QString &)> &shoot, const std::function<void()> &next) {
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    QTimer::singleShot(800, dialog, [scene, dialog, name, shoot, next] {
        shoot(dialog, name);
        dialog->close();
        next();
    });
}

} // namespace

void showConfigurationDialogs(QWidget *window, const VantorConfiguration &device,
                              const std::function<void(QWidget *, const QString &)> &shoot,
                              const std::function<void()> &done) {
    auto scene = std::make_shared<Scene>();
    kd::copyFields(scene->device, device);
    scene->device.write(scene->root);
    scene->loaded.read(scene->root);
    scene->store = std::make_unique<kd::SnapshotStore>(scene->folder.path());
    const kd::WritePreview preview{&scene->device, &scene->loaded, kd::writeAllSections(),
                                   kd::fieldsNotInFile(scene->root), QString()};
    kd::Snapshot snapshot = kd::Snapshot::capture(scene->device, kd::Snapshot::changesOf(preview.diff()));
    snapshot.programVersion = QStringLiteral(TAVREL_VERSION);
    scene->store->save(snapshot);
    const QString imei = scene->device.deviceInfo() ? scene->device.deviceInfo()->IMEI() : QString();

    auto *write = new WritePreviewDialog(
        QStringLiteral("Сохранение конфигурации"),
        QStringLiteral("Перезаписать все настройки прибора? \nДействие заменит текущие настройки"), preview,
        window);
    step(scene, write, QStringLiteral("21-write-preview"), shoot, [=] {
        auto *history = new HistoryDialog(*scene->store, imei, window);
        step(scene, history, QStringLiteral("22-history"), shoot, [=] {
            auto *compare =
                new CompareDialog(&scene->device, &scene->loaded, *scene->store, imei, {}, window);
            step(scene, compare, QStringLiteral("23-compare"), shoot, done);
        });
    });
}
