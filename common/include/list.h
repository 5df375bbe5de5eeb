/**
 * @file list.h
 * @brief A growable list of item references with a cursor.
 *
 * The list owns its array of references, never the items: it looks at them only through functions
 * of the caller, each of which gets the caller's datum as its last argument and leaves the list as
 * it is. Positions count from 0. NULL is a legal item. A list holds at most 32767 items.
 *
 * The cursor is the position of the current item; -1 stands before the first. list_removeAll() may
 * leave it behind the last, where there is no current item either.
 *
 * Functions that give an item give a status in the same result, see #ZV_LIST_ITEM: a caller who
 * stores small integers cannot tell the items -1, -2 and -5 from it. A call that fails changes
 * nothing, the cursor included.
 */
#ifndef ZVUTIL_LIST_H
#define ZVUTIL_LIST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_list Lists
 * @brief A growable list of item references with a cursor.
 *
 * @par Thread safety
 * Any number of threads at once, each list by one thread at a time; of list_sort() one call at a
 * time in the whole process.
 * @par Example
 * @snippet services.c list
 * @{
 */

/** A list, to be released with list_free(). */
typedef struct LIST LIST;

/** What went wrong; 0 is success. */
enum {
    ZV_LIST_NO_ITEM = -1,    /**< The cursor cannot move on, or nothing is there or matches. */
    ZV_LIST_NO_LIST = -2,    /**< The handle is NULL. */
    ZV_LIST_NO_MEMORY = -3,  /**< The list cannot grow. */
    ZV_LIST_DUPLICATE = -4,  /**< The item is in the list already. */
    ZV_LIST_NO_POSITION = -5 /**< The position lies outside 0 to the number of items less 1. */
};

/** A status as a function that gives an item gives it. */
#define ZV_LIST_ITEM(status) ((void*)(intptr_t)(status))

/** Compares two items, which may be NULL, or one and a key. @return 0 when equal; see each use. */
typedef int (*ListCompare)(const void* a, const void* b, void* datum);
/** Releases an item that is not NULL. @return negative to stop; the item then stays listed. */
typedef int (*ListRelease)(void* item, void* datum);
/** Does something with an item that is not NULL. @return non-zero to stop. */
typedef int (*ListApply)(void* item, void* datum);
/** Copies an item, which may be NULL. @return what stands for it in the copied list. */
typedef void* (*ListCopy)(void* item, void* datum);

/**
 * @name Lists as a whole
 * @{
 */

/**
 * Makes an empty list, its cursor at -1.
 * @param capacity items that fit before it must grow; 0 for 10.
 * @return the list, the caller's; NULL without memory and for capacities below 0 or above 32767.
 */
LIST* list_create(int capacity);

/**
 * Makes an empty list; the same as list_create().
 * @param capacity items that fit before it must grow; 0 for 10.
 * @return the list, the caller's; NULL without memory and for capacities below 0 or above 32767.
 */
LIST* new_list(int capacity);

/**
 * Releases the items, the last first, and then the list.
 * @param list    the list; may be NULL.
 * @param release called with each item that is not NULL; NULL to leave the items alone.
 * @param datum   handed to @p release.
 * @return 0; #ZV_LIST_NO_LIST; or what @p release stopped with: then the list stays, all items in
 *         it, those already released too.
 */
int list_free(LIST* list, ListRelease release, void* datum);

/**
 * Releases the items as list_free() does and empties the list.
 *
 * The capacity and the cursor of the list stay, so that the cursor may stand behind the last item
 * until an item is added; list_getPrev() steps it down then.
 * @param list    the list; may be NULL.
 * @param release called with each item that is not NULL; NULL to leave the items alone.
 * @param datum   handed to @p release.
 * @return 0; #ZV_LIST_NO_LIST; or what @p release stopped with, all items still in the list.
 */
int list_removeAll(LIST* list, ListRelease release, void* datum);

/**
 * Releases an item from malloc(): a release function for list_free() and list_removeAll().
 * @param item  the item.
 * @param datum not looked at.
 * @return 0.
 */
int freeListData(void* item, void* datum);

/**
 * Copies a list with its cursor and capacity.
 * @param list  the list; may be NULL.
 * @param copy  called with each item; NULL to have both lists refer to the same items.
 * @param datum handed to @p copy.
 * @return the copy, the caller's; NULL without memory (@p copy is not called then) or list.
 */
LIST* list_copy(const LIST* list, ListCopy copy, void* datum);

/**
 * Copies a list so that both lists refer to the same items.
 * @param list the list; may be NULL.
 * @return the copy, the caller's; NULL without memory or list.
 */
LIST* list_copyShallow(const LIST* list);

/** Counts the items. @param list the list; may be NULL. @return items or #ZV_LIST_NO_LIST. */
int list_size(const LIST* list);

/**
 * Tells how many items fit before the list grows.
 * @param list the list; may be NULL.
 * @return items or #ZV_LIST_NO_LIST.
 */
int list_capacity(const LIST* list);

/**
 * Tells the cursor.
 * @param list the list; may be NULL.
 * @return a position, -1 before the first; or #ZV_LIST_NO_LIST.
 */
int list_currentItem(const LIST* list);

/**
 * Applies a function to every item but NULL ones, from position 0 on.
 * @param list  the list; may be NULL.
 * @param apply called with each item; a result other than 0 stops.
 * @param datum handed to @p apply.
 * @return 0; #ZV_LIST_NO_LIST; or what @p apply stopped with.
 */
int list_perform(const LIST* list, ListApply apply, void* datum);

/**
 * Sorts the items; the order of equal ones is left open, and the cursor keeps its number.
 * @param list    the list; may be NULL.
 * @param compare gives a negative value, 0 or a positive one, as for qsort(), and does not sort
 *                itself; NULL to compare the items as signed integers.
 * @param datum   handed to @p compare.
 * @return 0 or #ZV_LIST_NO_LIST.
 * @par Thread safety
 * One sort at a time in the whole process.
 */
int list_sort(LIST* list, ListCompare compare, void* datum);

/**
 * Compares two slots of a list, as list_sort() has qsort() do; of use only while a list is sorted.
 * @param a a slot.
 * @param b a slot.
 * @return negative, 0 or positive.
 */
int list_qsort_compare(const void* a, const void* b);

/**
 * Swaps two items; the cursor stays.
 * @param list the list; may be NULL.
 * @param i    a position.
 * @param j    a position.
 * @return 1; 0 for no list or a position without an item.
 */
int list_exchange(LIST* list, int i, int j);
/** @} */

/**
 * @name Adding items
 * The cursor moves to the new item.
 * @{
 */

/**
 * Adds an item at the end.
 * @param list the list; may be NULL.
 * @param item the item.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY.
 */
int list_addItem(LIST* list, void* item);

/**
 * Adds an item at the end, the top of a stack; the same as list_addItem().
 * @param list the list; may be NULL.
 * @param item the item, which list_pop() gives back.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY.
 */
int list_push(LIST* list, void* item);

/**
 * Stores an item at a position, replacing the one there.
 * @param list     the list; may be NULL.
 * @param position where; behind the end, the positions between get NULL items.
 * @param item     the item.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY; #ZV_LIST_NO_POSITION below 0.
 */
int list_addNth(LIST* list, int position, void* item);

/**
 * Stores an item at a position; the same as list_addNth().
 * @param list     the list; may be NULL.
 * @param position where; behind the end, the positions between get NULL items.
 * @param item     the item.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY; #ZV_LIST_NO_POSITION below 0.
 */
int list_setAt(LIST* list, int position, void* item);

/**
 * Inserts an item before the one at a position.
 * @param list     the list; may be NULL.
 * @param position where; from the end on as list_addNth().
 * @param item     the item.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY; #ZV_LIST_NO_POSITION below 0.
 */
int list_insertNth(LIST* list, int position, void* item);

/**
 * Inserts an item before the one at a position; the same as list_insertNth().
 * @param list     the list; may be NULL.
 * @param position where; from the end on as list_addNth().
 * @param item     the item.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY; #ZV_LIST_NO_POSITION below 0.
 */
int list_insertAt(LIST* list, int position, void* item);

/**
 * Adds an item at the end unless list_isUnique() finds it.
 * @param list    the list; may be NULL.
 * @param item    the item.
 * @param compare as for list_isUnique().
 * @param datum   handed to @p compare.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY; #ZV_LIST_DUPLICATE.
 */
int list_addUnique(LIST* list, void* item, ListCompare compare, void* datum);

/**
 * Adds an item to a sorted list, behind those that are equal to it.
 * @param list    the list; may be NULL.
 * @param item    the item.
 * @param compare called with the new item first; it goes before the first item for which the result
 *                is exactly -1. NULL to compare the items as signed integers.
 * @param datum   handed to @p compare.
 * @return 0; #ZV_LIST_NO_LIST; #ZV_LIST_NO_MEMORY.
 */
int list_addSorted(LIST* list, void* item, ListCompare compare, void* datum);
/** @} */

/**
 * @name Reading items
 * The result is the item at the new cursor.
 * @{
 */

/**
 * Gives the item at the cursor.
 * @param list the list; may be NULL.
 * @return the item; NULL when there is none; #ZV_LIST_NO_LIST.
 */
void* list_get(const LIST* list);

/**
 * Goes to the first item and gives it.
 * @param list the list; may be NULL.
 * @return the item; NULL for an empty list; #ZV_LIST_NO_LIST.
 */
void* list_getFirst(LIST* list);

/**
 * Goes to the last item and gives it.
 * @param list the list; may be NULL.
 * @return the item; NULL for an empty list; #ZV_LIST_NO_LIST.
 */
void* list_getLast(LIST* list);

/**
 * Goes to the next item and gives it.
 * @param list the list; may be NULL.
 * @return the item; #ZV_LIST_NO_ITEM behind the last; #ZV_LIST_NO_LIST.
 */
void* list_getNext(LIST* list);

/**
 * Goes to the item before and gives it.
 * @param list the list; may be NULL.
 * @return the item; NULL where list_removeAll() left the cursor, which moves too; #ZV_LIST_NO_ITEM
 *         before the first; #ZV_LIST_NO_LIST.
 */
void* list_getPrev(LIST* list);

/**
 * Goes to a position and gives its item.
 * @param list     the list; may be NULL.
 * @param position where.
 * @return the item; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
void* list_getNth(LIST* list, int position);

/**
 * Goes to the first item; the same as list_getFirst().
 * @param list the list; may be NULL.
 * @return the item; NULL for an empty list; #ZV_LIST_NO_LIST.
 */
void* list_first(LIST* list);

/**
 * Goes to the last item; the same as list_getLast().
 * @param list the list; may be NULL.
 * @return the item; NULL for an empty list; #ZV_LIST_NO_LIST.
 */
void* list_last(LIST* list);

/**
 * Goes to the next item; the same as list_getNext().
 * @param list the list; may be NULL.
 * @return the item; #ZV_LIST_NO_ITEM behind the last; #ZV_LIST_NO_LIST.
 */
void* list_next(LIST* list);

/**
 * Goes to the item before; the same as list_getPrev().
 * @param list the list; may be NULL.
 * @return the item; NULL where list_removeAll() left the cursor, which moves too; #ZV_LIST_NO_ITEM
 *         before the first; #ZV_LIST_NO_LIST.
 */
void* list_prev(LIST* list);

/**
 * Goes to a position; the same as list_getNth().
 * @param list     the list; may be NULL.
 * @param position where.
 * @return the item; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
void* list_getAt(LIST* list, int position);

/** @} */

/**
 * @name Replacing items
 * @{
 */

/**
 * Replaces the item at the cursor.
 * @param list the list; may be NULL.
 * @param item the new item.
 * @return 0; #ZV_LIST_NO_ITEM when there is none; #ZV_LIST_NO_LIST.
 */
int list_set(LIST* list, void* item);

/**
 * Goes to the first item, which an empty list gets, and replaces it.
 * @param list the list; may be NULL.
 * @param item the new item.
 * @return 0; #ZV_LIST_NO_LIST.
 */
int list_setFirst(LIST* list, void* item);

/**
 * Goes to the last item, which an empty list gets, and replaces it.
 * @param list the list; may be NULL.
 * @param item the new item.
 * @return 0; #ZV_LIST_NO_LIST.
 */
int list_setLast(LIST* list, void* item);

/**
 * Goes to the next item and replaces it.
 * @param list the list; may be NULL.
 * @param item the new item.
 * @return 0; #ZV_LIST_NO_ITEM behind the last; #ZV_LIST_NO_LIST.
 */
int list_setNext(LIST* list, void* item);

/**
 * Goes to the item before and replaces it.
 * @param list the list; may be NULL.
 * @param item the new item.
 * @return 0; #ZV_LIST_NO_ITEM before the first and where list_removeAll() left the cursor;
 *         #ZV_LIST_NO_LIST.
 */
int list_setPrev(LIST* list, void* item);

/**
 * Goes to a position and replaces the item.
 * @param list     the list; may be NULL.
 * @param position where.
 * @param item     the new item.
 * @return 0; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
int list_setNth(LIST* list, int position, void* item);

/**
 * Goes to a position.
 * @param list     the list; may be NULL.
 * @param position where.
 * @return 0; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
int list_setIndex(LIST* list, int position);

/** @} */

/**
 * @name Removing items
 * The removed item is the caller's again.
 * @{
 */

/**
 * Removes the item at a position.
 *
 * The cursor goes before it, so that list_getNext() gives the one that followed.
 * @param list     the list; may be NULL.
 * @param position where.
 * @return the item; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
void* list_deleteNth(LIST* list, int position);

/**
 * Removes the item at a position; the same as list_deleteNth().
 * @param list     the list; may be NULL.
 * @param position where.
 * @return the item; #ZV_LIST_NO_POSITION; #ZV_LIST_NO_LIST.
 */
void* list_deleteAt(LIST* list, int position);

/**
 * Removes the first item that matches, as list_deleteNth() does.
 * @param list    the list; may be NULL.
 * @param key     what to look for.
 * @param compare called with an item and @p key; 0 is a match. NULL to look for the item that is
 *                identical to @p datum, whatever @p key is.
 * @param datum   handed to @p compare.
 * @return the item; #ZV_LIST_NO_ITEM; #ZV_LIST_NO_LIST.
 */
void* list_deleteItem(LIST* list, const void* key, ListCompare compare, void* datum);

/**
 * Removes the first item that matches; the same as list_deleteItem().
 * @param list    the list; may be NULL.
 * @param key     what to look for.
 * @param compare called with an item and @p key; 0 is a match. NULL to look for the item that is
 *                identical to @p datum, whatever @p key is.
 * @param datum   handed to @p compare.
 * @return the item; #ZV_LIST_NO_ITEM; #ZV_LIST_NO_LIST.
 */
void* list_deleteMatching(LIST* list, const void* key, ListCompare compare, void* datum);

/**
 * Removes the last item, the top of a stack; the cursor goes to the one before.
 * @param list the list; may be NULL.
 * @return the item; #ZV_LIST_NO_ITEM for an empty list; #ZV_LIST_NO_LIST.
 */
void* list_pop(LIST* list);
/** @} */

/**
 * @name Searching
 * @{
 */

/**
 * Goes to the first item that matches.
 * @param list    the list; may be NULL.
 * @param key     what to look for.
 * @param compare called with an item and @p key; 0 is a match. NULL to look for the item that is
 *                identical to @p key.
 * @param datum   handed to @p compare.
 * @return its position; #ZV_LIST_NO_ITEM or #ZV_LIST_NO_LIST.
 */
int list_findItem(LIST* list, const void* key, ListCompare compare, void* datum);

/**
 * Goes to the first item that matches, as list_findItem() does, and gives it.
 * @param list    the list; may be NULL.
 * @param key     what to look for.
 * @param compare as for list_findItem(); its datum is NULL.
 * @return the item; #ZV_LIST_NO_POSITION when nothing matches; #ZV_LIST_NO_LIST.
 */
void* list_getInstanceMatching(LIST* list, const void* key, ListCompare compare);

/**
 * Tells whether no item of a list matches a new one; the cursor stays.
 * @param list    the list; may be NULL.
 * @param item    the new item.
 * @param compare called with @p item and an item of the list; 0 is a match. NULL for identity.
 * @param datum   handed to @p compare.
 * @return 1 or 0; 0 for no list too.
 */
int list_isUnique(const LIST* list, const void* item, ListCompare compare, void* datum);
/** @} */
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
