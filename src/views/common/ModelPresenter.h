#pragma once

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class AppModel;

// Base of the small display helpers the pages bind to: holds the one AppModel and
// re-reads it whenever a property the page shows changes. The model is a plain
// QObject here so QML can hand over the window's model without knowing its type.
class ModelPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *model READ modelObject WRITE setModelObject NOTIFY modelChanged)
    QML_ANONYMOUS

public:
    explicit ModelPresenter(QObject *parent = nullptr);

    [[nodiscard]] QObject *modelObject() const;
    void setModelObject(QObject *model);
    [[nodiscard]] AppModel *model() const;

Q_SIGNALS:
    void modelChanged();

protected:
    // Connect the model's change signals; called once per model, disconnected with it.
    virtual void observe(AppModel &model);

private:
    QPointer<AppModel> m_model;
};
