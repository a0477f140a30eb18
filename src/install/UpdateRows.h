#pragma once

// The views of one update: the app's row in the main window and in the panel, or a progress bar on a terminal. A view
// of its job: follow() connects them, and the calls then arrive on the job's thread (the owner's), in this order:
// the bar is shown, it moves, the cancel buttons go when installing begins, and the fields come back at the end.

class UpdateJob;

class UpdateRows
{
public:
    virtual ~UpdateRows() = default;

    virtual void hideFieldsShowProgressBar() {}
    // The main window's row and the panel's row; fraction 0..1, more when the host did not say the size.
    virtual void updateMainProgressBar(double fraction) { (void)fraction; }
    virtual void updateProgressBar(double fraction) { (void)fraction; }
    // The file is complete and is being installed: it can no longer be cancelled.
    virtual void disableCancelButtons() {}
    virtual void hideProgressBarShowFields(double fraction) { (void)fraction; }

    // Shows job on rows until the job goes; rows must outlive the job or be followed no more.
    static void follow(UpdateJob &job, UpdateRows &rows);
};
