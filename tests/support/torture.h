/// \file
/// Lets the first, second, third ... call of the plug-in to its surroundings fail, until a job gets through;
/// then lets each function that it asked for be missing.
#pragma once

#include "host/host.h"
#include "tests/reference/picture.h"
#include "tests/support/pictures.h"

#include <functional>
#include <set>
#include <string>
#include <utility>
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
    /// Functions whose failure spoils the result and not the call, besides those of the editor.
    std::set<std::string> alsoSpoil;
    /// What else a failed job may leave in a source, as `outcomeText`: a step of several that was done.
    std::set<std::string> mayLeave;
};

/// A job that is ready to run: nothing of its preparation is struck.
struct TortureRun
{
    std::function<standin::Value()> job;
    /// The pictures that it is given.
    std::vector<standin::Picture> sources;
    /// What it has left in variables, by name; may be empty.
    std::function<std::vector<std::pair<std::string, standin::Value>>()> leavings;
};
using TorturePreparation = std::function<TortureRun(TestHost&)>;

/// Runs the job again and again with the n-th call (host function, system function, QuickDraw or heap) made
/// to fail, for n = 1, 2, ... until a run meets no failure; then once without each function that this run
/// asked for. Every run must leave a balanced ledger and no exception. Its result is the clean one, or the
/// very result of the run without failures; what it leaves in variables and sources is what was there before,
/// or what that run left, or nothing. Failures that the plug-in is to survive with other pixels (no row
/// bytes, a copy that cannot be drawn) may only change the pixels. The host is rewound for every run; `what`
/// is for messages.
void torture(TestHost& host, const std::string& what, const TorturePreparation& prepare,
             const TortureRules& rules = {}, SourceLine line = SourceLine::here());

/// The same with a fresh host and pictures in these storages.
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

/// A small picture with a pixel behind the last whole vector.
reference::Picture pictureToTorture(std::uint32_t seed = 7, Palette palette = Palette::Noise);
