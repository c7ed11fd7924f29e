#pragma once

class AbstractCanAdapter;

/// What the watch for changes finds when it compares the adapter that the form shows with what the form says.
enum class FormDifference {
    None,
    Unsaved, ///< the user's edits, which wait for the user to take them over
    Applied, ///< those of a "SocketCAN" adapter, which are taken over at once
};

FormDifference compareWithForm(const AbstractCanAdapter &shown, const AbstractCanAdapter &fromForm);
