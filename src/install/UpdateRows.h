#pragma once

// The views of one running update: the app's row in the main window and in the panel, or a progress bar on a
// terminal. Called on the update's worker thread; a view that draws on another thread hands the calls over there
// without waiting.

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
};
