#include "ModelPresenter.h"

#include "app/WindowModel.h"

ModelPresenter::ModelPresenter(QObject *parent)
    : QObject(parent)
{
}

WindowModel *ModelPresenter::model() const
{
    return m_model.data();
}

QObject *ModelPresenter::modelObject() const
{
    return m_model.data();
}

void ModelPresenter::setModelObject(QObject *model)
{
    auto *appModel = qobject_cast<WindowModel *>(model);
    if (appModel == m_model)
        return;
    if (m_model)
        m_model->disconnect(this);
    m_model = appModel;
    if (m_model)
        observe(*m_model);
    Q_EMIT modelChanged();
}

void ModelPresenter::observe(WindowModel &model)
{
    Q_UNUSED(model)
}
