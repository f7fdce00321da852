#pragma once

/// Thread tags used in every header of this library. They stand in front of a function's description.
///
///   [RT]   the audio thread, and only that one: never allocates, locks, logs or waits
///   [CT]   any control thread (the GUI thread, say); several at once are fine unless it says otherwise
///   [OFF]  only while no audio thread runs `Engine::process` on the object
///   [ANY]  everywhere, at any time
///
/// A free function without a tag is pure: it reads its arguments, returns its result and can run anywhere.
