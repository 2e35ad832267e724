#pragma once

/// The base of classes whose methods CTimer::Start() calls. It adds nothing to an object.
class CObject {};
