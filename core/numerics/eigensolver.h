// SPDX-License-Identifier: MIT
// The dense symmetric eigensolver: all eigenvalues and eigenvectors of the Fock matrix and of the blocks of a spin
// Hamiltonian.
#pragma once

// Diagonalises a real symmetric matrix[n][n], row-major with rows of n numbers, so that it can be a block at the
// start of a larger buffer. Its lower triangle is read; the whole block is overwritten. vectors[n][n] receives the
// eigenvectors in its rows, orthonormal, without a convention of sign; values[n] the eigenvalues, ascending, in the
// unit of the matrix. The same matrix gives the same bytes. Polls, so it may not return. Not reentrant.
// Fatal error OutOfMemory if there is no memory for the work arrays.
void SolveEigenproblem(double* matrix, double* vectors, double* values, int n);

// Bytes of the work arrays for order n.
double EigensolverWorkBytes(int n);

// Makes the work arrays large enough for order n, and polls; 0 if there is no memory. SolveEigenproblem calls it when
// needed.
int ReserveEigensolverWork(int n);

// Frees the work arrays; harmless if there are none.
void FreeEigensolverWork();
