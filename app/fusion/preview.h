#pragma once

#include <QHash>
#include <QImage>
#include <QObject>
#include <QStringList>
#include <memory>

class QProcess;
class QTemporaryDir;

// A rough fusion of the pictures taken so far, shown while a stack is still being captured.
// It must never delay a capture: offer() returns at once, pictures are read and scaled in a
// worker thread, enfuse runs at a lower priority, and an offer that comes while a preview is
// still being made is skipped rather than queued.
//
// The preview is at most kWidth pixels wide, so each picture is fused at that size too: the
// pictures are scaled down once each (kept in a temporary folder for the later previews of
// the run), and enfuse works on those, without alignment. A preview late in a long stack of
// large pictures so costs about as much as the first one, and what is sharp in it is what the
// photographer can see at that size.
class FusionPreview : public QObject {
    Q_OBJECT
public:
    static constexpr int kWidth = 800;

    explicit FusionPreview(QObject* parent = nullptr);
    ~FusionPreview() override;

    // The pictures of the run so far, in plane order. A preview is made when at least
    // every() pictures came since the last one and none is being made.
    void offer(const QStringList& picturesSoFar);
    void setEvery(int pictures);  // at least 1; 3 unless set
    int every() const { return every_; }
    // A new run: forgets the pictures of the last one and drops a preview being made.
    void reset();

signals:
    void ready(const QImage& preview);

private:
    void onScaled(quint64 generation, const QStringList& pictures,
                  const QHash<QString, QString>& scaled);
    void fuse(quint64 generation, const QStringList& inputs);
    void load(quint64 generation, const QString& file);
    void stopFusing();

    int every_ = 3;
    qsizetype previewed_ = 0;  // pictures in the last preview of the run
    bool busy_ = false;
    quint64 generation_ = 0;  // one per run; work of an earlier run is dropped when it comes
    std::shared_ptr<QTemporaryDir> scratch_;
    QHash<QString, QString> scaled_;  // picture -> its scaled copy in scratch_
    QProcess* process_ = nullptr;
};
