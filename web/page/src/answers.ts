// Answers that are kept up to date and never shown for another question.
import { useEffect, useState } from "preact/hooks";
import { type Answer, type Values, run } from "./api";
import { sentence } from "./dialogs";
import { useChanges } from "./place";

/** Waits for an answer. @return stops waiting: an answer that arrives later is ignored. */
export function whileAsked<T>(answer: Promise<T>, take: (found: T) => void, fail: (error: unknown) => void): () => void {
    let isLate = false;
    answer.then(
        found => isLate || take(found),
        error => isLate || fail(error),
    );
    return () => {
        isLate = true;
    };
}

/**
 * The answer of a reading command, which is asked for again after changes. Undefined until the answer to this question
 * has arrived. @param command  undefined to ask nothing.
 */
export function useAnswer(command: string | undefined, parameters: Values): { answer?: Answer; trouble: string } {
    const changes = useChanges();
    const question = JSON.stringify([command, parameters]);
    const [found, setFound] = useState<{ question: string; answer?: Answer; trouble: string }>();
    useEffect(() => {
        if (command === undefined) {
            return;
        }
        return whileAsked(
            run(command, parameters),
            answer => setFound({ question, answer, trouble: "" }),
            error =>
                setFound(before => ({
                    ...(before?.question === question ? before : { question }),
                    trouble: sentence(error),
                })),
        );
    }, [question, changes]);
    return found?.question === question ? found : { trouble: "" };
}
