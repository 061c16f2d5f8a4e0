/// \file
/// Lets the first, second, third ... call of the plug-in to its surroundings fail, until a job gets through.
#pragma once

#include "host/host.h"
#include "tests/reference/picture.h"
#include "tests/support/pictures.h"

#include <functional>
#include <string>
#include <vector>

/// A picture that a job works on.
struct TortureSource
{
    reference::Picture picture;
    standin::Storage storage;
};

/// Does the work on the host and the sources (pictures in the order they were given), and gives its result.
using TortureJob = std::function<standin::Value(TestHost&, std::vector<standin::Picture>&)>;

struct TortureRules
{
    /// What a failed job gives: nil, false, 0, 0.0 or -1.
    standin::Value cleanResult = nullptr;
    /// For jobs that move the pixels of their sources.
    bool changesSources = false;
    /// Host functions whose failure spoils the result and not the call, besides those of the editor.
    std::set<std::string> alsoSpoil;
};

/// Runs the job on a fresh host again and again with the n-th call (host function, system function, QuickDraw
/// or heap) made to fail, for n = 1, 2, ... until a run meets no failure. Every run must leave a balanced
/// ledger, no exception and unchanged sources, and give either the clean result or the very result of a run
/// without failures. Failures that the plug-in is to survive with other pixels (no row bytes, a copy that
/// cannot be drawn) may only change the pixels.
void torture(const HostSetup& setup, const std::vector<TortureSource>& sources, const TortureJob& job,
             const TortureRules& rules = {}, SourceLine line = SourceLine::here());

/// The same on several hosts, with the sources in all the storages that they can have there: each picture in
/// the storage behind that of the picture before it, so that locked and drawn ones meet.
void torture(const std::vector<HostSetup>& setups, const std::vector<reference::Picture>& pictures,
             const TortureJob& job, const TortureRules& rules = {}, SourceLine line = SourceLine::here());
/// The same on the four hosts.
void torture(standin::Artefact artefact, const std::vector<reference::Picture>& pictures,
             const TortureJob& job, const TortureRules& rules = {}, SourceLine line = SourceLine::here());

/// The usual job: a method of the first source, with the arguments given.
TortureJob methodJob(const std::string& method, const standin::Arguments& arguments = {});

/// The usual job on the usual picture.
void tortureMethod(standin::Artefact artefact, const std::string& method,
                   const standin::Arguments& arguments = {}, const TortureRules& rules = {},
                   SourceLine line = SourceLine::here());

/// A small picture with a pixel behind the last whole vector.
reference::Picture pictureToTorture(std::uint32_t seed = 7, Palette palette = Palette::Noise);
