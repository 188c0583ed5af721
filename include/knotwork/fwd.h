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

class TagRw;
