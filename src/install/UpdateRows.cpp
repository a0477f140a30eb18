#include "install/UpdateRows.h"

#include "install/UpdateJob.h"

void UpdateRows::follow(UpdateJob &job, UpdateRows &rows)
{
    QObject::connect(&job, &UpdateJob::statusChanged, &job, [&rows](UpdateStatus status) {
        if (status == UpdateStatus::Downloading) {
            rows.hideFieldsShowProgressBar();
            rows.updateMainProgressBar(0.0);
            rows.updateProgressBar(0.01);
        } else if (status == UpdateStatus::Installing) {
            rows.disableCancelButtons();
        }
    });
    QObject::connect(&job, &UpdateJob::progressChanged, &job, [&rows](double fraction) {
        rows.updateMainProgressBar(UpdateJob::barValue(fraction));
        rows.updateProgressBar(UpdateJob::barValue(fraction));
    });
    QObject::connect(&job, &UpdateJob::finished, &job,
                     [&rows, &job] { rows.hideProgressBarShowFields(job.progress()); });
}
