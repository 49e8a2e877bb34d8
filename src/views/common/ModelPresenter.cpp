#include "ModelPresenter.h"

#include "app/AppModel.h"

ModelPresenter::ModelPresenter(QObject *parent)
    : QObject(parent)
{
}

AppModel *ModelPresenter::model() const
{
    return m_model.data();
}

QObject *ModelPresenter::modelObject() const
{
    return m_model.data();
}

void ModelPresenter::setModelObject(QObject *model)
{
    auto *appModel = qobject_cast<AppModel *>(model);
    if (appModel == m_model)
        return;
    if (m_model)
        m_model->disconnect(this);
    m_model = appModel;
    if (m_model)
        observe(*m_model);
    Q_EMIT modelChanged();
}

void ModelPresenter::observe(AppModel &model)
{
    Q_UNUSED(model)
}
