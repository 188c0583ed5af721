// SPDX-License-Identifier: MIT
// Forward declarations of the library's classes, for headers that only name them.
#pragma once

class RWBlock;

class DoubleVec;
class IntVec;
class SCharVec;

class DoubleVecPick;
class IntVecPick;
class SCharVecPick;

class DoubleGenMat;
class IntGenMat;
class DoubleLowerTriMat;
class DoubleUpperTriMat;
class DoubleSymMat;
class RODoubleRef;
class DoubleGenMatPick;
class IntGenMatPick;

class DoubleGenFact;
class DoubleQRDecomp;
class DoubleSVDecomp;
class DoubleChDecomp;
class DoubleLeastSqQR;
class DoubleLeastSqCh;
class DoubleLeastSqInc;

class TtupleVector;
class TtupleMatrix;
class TnumberSequence;
class TvertIndexTable;
class TvertDataIndexTable;

class TbaseReporter;
class TsolverReporter;
class TbaseSolver;
class TsolveSystems;
class TsolveConstrainedLsq;
class TsolveConstrainedLsqQR;
class Thouseholder;
class TsolveTensorProductLsq;

class AP_GEOMETRIC;
class AP_MMBOX;
class AP_SPLINE;
class AP_SURFACE;
struct AP_CNODE;
struct AP_SNODE;

class TagRw;
