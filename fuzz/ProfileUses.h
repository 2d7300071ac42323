// Runs all code that uses a profile, on small pictures.
#pragma once

#include <QByteArray>

/// Reads @p content as the plain correction does, and applies every combination of its corrections.
void CorrectPlainly(const QByteArray &content);
/// Reads @p content as a profile in any XML form, fits it to a few pictures and renders some of them.
void CorrectFitted(const QByteArray &content);
